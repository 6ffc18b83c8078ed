#pragma once

/// Throws CommandError, with the exit code of an interrupt, if the user has asked the program to
/// stop. To be called where stopping leaves everything whole.
void stopIfInterrupted();
