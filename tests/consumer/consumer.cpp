// A stranger's program: makes a project with one class through the installed library alone.
#include <TNV_SampleBenchNative/TNV_SampleBenchNative.h>

#include <iostream>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  WTNVProject project("consumer", argv[1], "", "");
  const bool made = project.wCreate();
  project.wAddDNNClass("screw", -1, -1);
  std::cout << project.wGetProjectName() << " has " << project.wGetDNNClasses().size()
            << " class\n";
  return made && project.wUpdate(true) ? 0 : 1;
}
