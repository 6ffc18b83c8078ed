#include "ProgramRunner.h"

#include <fcntl.h>
#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

#include "support/Pictures.h"

namespace {

void redirect(int descriptor, const std::string& file) {
  const int opened = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  dup2(opened, descriptor);
  close(opened);
}

// Whoever is no superuser keeps their rights.
void becomeNobody() {
  constexpr unsigned int nobody = 65534;
  if (geteuid() != 0) return;
  if (setgroups(0, nullptr) != 0 || setgid(nobody) != 0 || setuid(nobody) != 0) _exit(125);
}

[[noreturn]] void become(const std::vector<std::string>& command) {
  std::vector<char*> arguments;
  for (const auto& text : command)
    arguments.push_back(const_cast<char*>(text.c_str()));
  arguments.push_back(nullptr);
  execv(arguments[0], arguments.data());
  _exit(127);
}

std::vector<std::string> programWith(const std::vector<std::string>& arguments) {
  std::vector<std::string> command{SAMPLEBENCH_PROGRAM};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return command;
}

}  // namespace

RunningProgram::RunningProgram(const std::vector<std::string>& command,
                               const std::string& directory, User user)
    : child(-1) {
  // Made before the fork: the child only calls what is safe there.
  const std::string out = outputs.write("out", "");
  const std::string err = outputs.write("err", "");
  child = fork();
  if (child != 0) return;
  if (chdir(directory.c_str()) != 0) _exit(126);
  redirect(STDOUT_FILENO, out);
  redirect(STDERR_FILENO, err);
  if (user == User::nobody) becomeNobody();
  become(command);
}

bool RunningProgram::waitForError(const std::string& text) const {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(100);
  while (std::chrono::steady_clock::now() < deadline) {
    if (readFile(outputs / "err").find(text) != std::string::npos) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return false;
}

void RunningProgram::interrupt() const {
  signal(SIGINT);
}

void RunningProgram::signal(int number) const {
  kill(child, number);
}

ProgramResult RunningProgram::wait() {
  int status = 0;
  waitpid(child, &status, 0);
  const int code = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  return {code, readFile(outputs / "out"), readFile(outputs / "err")};
}

RunningProgram ProgramTest::start(const std::vector<std::string>& arguments) const {
  return {programWith(arguments), place.path()};
}

ProgramResult ProgramTest::run(const std::vector<std::string>& arguments) const {
  return start(arguments).wait();
}

ProgramResult ProgramTest::runAsNobody(const std::vector<std::string>& arguments) const {
  namespace fs = std::filesystem;
  fs::permissions(place.path(), fs::perms::others_read | fs::perms::others_exec,
                  fs::perm_options::add);
  return RunningProgram(programWith(arguments), place.path(), RunningProgram::User::nobody).wait();
}

ProgramResult ProgramTest::runWithoutRights(const std::vector<std::string>& arguments) const {
  namespace fs = std::filesystem;
  constexpr auto writing = fs::perms::owner_write;
  constexpr auto readable = fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec |
                            fs::perms::others_read | fs::perms::others_exec;
  std::vector<fs::path> directories{place.path()};
  for (const auto& entry : fs::recursive_directory_iterator(place.path()))
    if (entry.is_directory()) directories.push_back(entry.path());
  for (const auto& directory : directories)
    fs::permissions(directory, readable & ~writing);
  auto result =
      RunningProgram(programWith(arguments), place.path(), RunningProgram::User::nobody).wait();
  for (const auto& directory : directories)
    fs::permissions(directory, readable);
  return result;
}

std::string ProgramTest::succeed(const std::vector<std::string>& arguments) const {
  const auto result = run(arguments);
  EXPECT_EQ(result.exitCode, 0) << result.err;
  return result.out;
}

void ProgramTest::fail(const std::vector<std::string>& arguments, const std::string& text,
                       int exitCode) const {
  const auto result = run(arguments);
  EXPECT_EQ(result.exitCode, exitCode) << result.err;
  EXPECT_NE(result.err.find(text), std::string::npos) << result.err;
  EXPECT_EQ(result.out, "");
}

void ProgramTest::failWholly(const Words& arguments, const std::string& text, int exitCode) const {
  const auto before = contents("");
  fail(arguments, text, exitCode);
  EXPECT_EQ(contents(""), before) << ::testing::PrintToString(arguments);
}

std::string ProgramTest::dryRun(Words arguments) const {
  const auto before = contents("");
  arguments.emplace_back("--dry-run");
  auto out = succeed(arguments);
  EXPECT_EQ(contents(""), before) << ::testing::PrintToString(arguments);
  return out;
}

std::map<std::string, std::string> ProgramTest::contents(const std::string& directory) const {
  std::map<std::string, std::string> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(place / directory))
    files[entry.path().string()] = entry.is_regular_file() ? readFile(entry.path().string()) : "";
  return files;
}

std::string ProgramTest::recordOf(const std::string& set, const std::string& picture) const {
  for (const auto& entry : std::filesystem::directory_iterator(place / "projects/parts/is_" + set))
    if (readFile(entry.path()).find(picture) != std::string::npos) return entry.path();
  ADD_FAILURE() << "no record of " << picture;
  return "";
}

void ProgramTest::makeProject() const {
  place.makeDirectory("photos");
  writePicture(place / "photos/a.png", 128, 64);
  writePicture(place / "photos/b.png", 128, 64);
  succeed({"create", "parts"});
  succeed({"class", "add", "parts", "screw", "nut"});
  succeed({"import", "parts", "day1", "photos"});
}

void ProgramTest::makeMarkedProject() const {
  makeProject();
  succeed({"mark", "parts", "a.png", "Rect", "0.25,0.25", "0.5,0.75", "--class", "nut"});
}

std::size_t occurrences(const std::string& text, const std::string& wanted) {
  std::size_t count = 0;
  for (auto at = text.find(wanted); at != std::string::npos; at = text.find(wanted, at + 1))
    ++count;
  return count;
}
