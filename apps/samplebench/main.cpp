#include "Arguments.h"

int main(int argc, char** argv) {
  Output output;
  return runProgram(argc, argv, output);
}
