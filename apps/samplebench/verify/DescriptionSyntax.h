#pragma once

#include "verify/Finding.h"
#include "verify/TextFile.h"

/// Checks that brackets and quotes of a `data.yaml` are closed and that no line is indented by
/// tabs: trainers refuse such a file, while what can be made out of it is still read here. Keys,
/// and numbers of names, that stand twice are findings, too. Throws CommandError if what is needed
/// is spelled in a way that is not read here: what would be found then would be wrong.
void checkDescriptionSyntax(const TextFile& file, Findings& findings);
