#pragma once

#include "Output.h"
#include "verify/Finding.h"

/// Writes the findings, one a line, and how many there are of each rule. Any changes the exit code.
void writeFindings(const Findings& findings, Output& output);
