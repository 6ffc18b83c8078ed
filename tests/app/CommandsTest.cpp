#include <gmock/gmock.h>
#include <json/reader.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <fcntl.h>
#include <pty.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Arguments.h"
#include "CommandLine.h"
#include "ProgramRunner.h"
#include "support/Pictures.h"
#include "support/PortalServer.h"

namespace fs = std::filesystem;

namespace {

using ::testing::AllOf;
using ::testing::AnyOf;
using ::testing::HasSubstr;
using ::testing::Not;

/// A command of the program with the options of its help.
struct Described {
  Words words;
  bool takesDryRun = false;
  bool takesJson = false;
};

void collect(const CLI::App& app, const Words& words, std::vector<Described>& found) {
  const auto below = app.get_subcommands([](const CLI::App*) { return true; });
  for (const auto* command : below) {
    auto more = words;
    more.push_back(command->get_name());
    collect(*command, more, found);
  }
  if (below.empty())
    found.push_back({words, app.get_option_no_throw("--dry-run") != nullptr,
                     app.get_option_no_throw("--json") != nullptr});
}

/// All commands but the groups, from the program's own description.
std::vector<Described> allCommands() {
  CLI::App app;
  ProgramOptions program;
  describeProgram(app, program);
  std::vector<Described> found;
  collect(app, {}, found);
  return found;
}

std::string textOf(const Words& words) {
  std::string text;
  for (const auto& word : words)
    text += (text.empty() ? "" : " ") + word;
  return text;
}

Words joined(const Words& a, const Words& b) {
  Words all = a;
  all.insert(all.end(), b.begin(), b.end());
  return all;
}

Json::Value parsed(const std::string& text) {
  Json::Value value;
  std::istringstream stream(text);
  EXPECT_NO_THROW(stream >> value) << text;
  return value;
}

/// Everything below the directory: kind, size, time of the last change, content.
std::map<std::string, std::string> snapshot(const std::string& directory) {
  std::map<std::string, std::string> entries;
  for (const auto& entry : fs::recursive_directory_iterator(directory)) {
    struct stat state {};
    lstat(entry.path().c_str(), &state);
    entries[entry.path().string()] =
        std::to_string(state.st_mode) + " " + std::to_string(state.st_size) + " " +
        std::to_string(state.st_mtim.tv_sec) + "." + std::to_string(state.st_mtim.tv_nsec) + " " +
        (entry.is_regular_file() ? readFile(entry.path().string()) : "");
  }
  return entries;
}

/// A workshop in which every command finds something to do, with blanks and letters beyond ASCII in
/// all names.
class ProgramCommands : public ProgramTest {
 protected:
  ProgramCommands() {
    place.makeDirectory("fotos ü");
    writePicture(place / "fotos ü/b ild é.png", 128, 64);
    place.makeDirectory("neue fotos ü");
    writePicture(place / "neue fotos ü/c ü.png", 64, 64);
    place.makeDirectory("um gezogen ü");
    writePicture(place / "um gezogen ü/c ü.png", 64, 64);
    place.makeDirectory("von hand ü");
    writePicture(place / "von hand ü/d ü.png", 64, 64);
    place.write("von hand ü/d ü.txt", "0 0.5 0.5 0.5 0.5\n");
    place.write("von hand ü/classes.txt", "Schraube groß\n");
    place.write("ge wichte ü/alt es.bin", "hello");
    place.write("her ü/neu es.bin", "hello");
    place.write("mirror/list",
                R"({"0":{"name":"an geboten.bin","hash":"5d41402abc4b2a76b9719d911017c592",)"
                R"("file_size":"5","creation_date":"today","download_link":"file://)" +
                    place.write("mirror/w.bin", "hello") + "\"}}");
    place.write("ein stellung ü.cfg", "Basic.DocumentsPath.Use = NO\n");
    succeed({"create", project});
    succeed({"class", "add", project, "Schraube groß", "alt ä", "weg é", "fort ñ"});
    succeed({"import", project, "Tag 1 ü", "fotos ü"});
    succeed({"mark", project, "b ild é.png", "Rect", "0.25,0.25", "0.5,0.75", "--class",
             "Schraube groß"});
    succeed({"create", "zwei ü"});
    succeed({"class", "add", "zwei ü", "a ä", "b ü"});
    succeed({"import", "zwei ü", "Tag ü", "neue fotos ü"});
    succeed({"create", removed});
    succeed({"class", "add", removed, "a ä"});
    for (const auto& [set, directory] :
         {std::pair("Tag 1 ü", "fotos ü"), {"Tag 2 ü", "neue fotos ü"}, {"Tag 3 ü", "von hand ü"}})
      succeed({"import", removed, set, directory});
    succeed({"mark", removed, "b ild é.png", "Point", "0.5,0.5", "--class", "a ä"});
    for (const char* user : {"Ann é", "Bea ü"})
      succeed({"user", "create", user, "--users", "leu te ü"});
  }

  /// What makes each command succeed, behind its own words.
  std::map<std::string, Words> arguments() const {
    const std::string address = "file://" + place / "mirror/list";
    const Words weights{"--directory", "ge wichte ü"};
    const Words users{"--users", "leu te ü"};
    const std::string picture = "b ild é.png";
    return {
        {"create", {"nou veau ü"}},
        {"class add", {project, "Mutter ü", "Scheibe é"}},
        {"class list", {project}},
        {"class rename", {project, "alt ä", "neu ö"}},
        {"class merge", {project, "weg é", "--into", "Schraube groß"}},
        {"class delete", {project, "fort ñ"}},
        {"class order", {"zwei ü", "b ü", "a ä"}},
        {"import", {project, "Tag 2 ü", "neue fotos ü"}},
        {"mark", {project, picture, "Rect", "0.1,0.1", "0.2,0.5", "--class", "Schraube groß"}},
        {"list", {project}},
        {"remove mark", {removed, picture, "1"}},
        {"remove picture", {removed, "c ü.png"}},
        {"remove set", {removed, "Tag 3 ü"}},
        {"remove project", {removed}},
        {"render", {project, picture, "-o", "ge sehen ü.png"}},
        {"magnify", {project, picture, "--at", "0.5,0.5", "-o", "groß er.png"}},
        {"crop", {project, picture, "-o", "aus ü/schnitt e"}},
        {"gallery", {project, "--report", "sei te ü.html"}},
        {"generate", {project, "--output", "sätz"}},
        {"view", {"von hand ü", "-o", "bo gen ü.png"}},
        {"stats", {project, "--report", "zah len ü.html"}},
        {"relink", {"zwei ü", "--pictures", "neue fotos ü=um gezogen ü"}},
        {"check", {project}},
        {"verify", {"von hand ü"}},
        {"weights list", joined(weights, {"--address", address})},
        {"weights get", joined(weights, {"an geboten.bin", "--address", address})},
        {"weights import", joined(weights, {"her ü/neu es.bin"})},
        {"weights remove", joined(weights, {"alt es.bin"})},
        {"labels import", {project, "Tag 3 ü", "von hand ü"}},
        {"labels export", {project, "für andere ü", "--format", "Darknet", "--copy"}},
        {"user list", users},
        {"user create", joined(users, {"Cay ö"})},
        {"user set", joined(users, {"Ann é", project})},
        {"user remove", joined(users, {"Bea ü"})},
        {"config", {"ein stellung ü.cfg"}},
        {"demo", {"dëmo"}},
        {"manual", {}},
        {"completion", {"fish"}},
    };
  }

  /// The entries of the workshop that are there, gone or otherwise since then.
  std::string changedSince(const std::map<std::string, std::string>& before) const {
    const auto now = snapshot(place.path());
    std::string paths;
    for (const auto& [path, state] : before)
      if (!now.contains(path) || now.at(path) != state) paths += path + "\n";
    for (const auto& [path, state] : now)
      if (!before.contains(path)) paths += path + "\n";
    return paths;
  }

  Words callOf(const Described& command) const {
    const auto all = arguments();
    const auto own = all.find(textOf(command.words));
    EXPECT_NE(own, all.end()) << "no arguments here for " << textOf(command.words);
    return own == all.end() ? command.words : joined(command.words, own->second);
  }

  static constexpr auto project = "mes pièces 1";
  static constexpr auto removed = "drei ü";
};

}  // namespace

TEST_F(ProgramCommands, EachTeachesItselfWithAnExample) {
  for (const auto& [words, takesDryRun, takesJson] : allCommands()) {
    const auto help = succeed(joined(words, {"--help"}));
    EXPECT_THAT(help, HasSubstr("Example:\n  samplebench " + textOf(words))) << textOf(words);
    EXPECT_TRUE(takesJson) << textOf(words);
  }
}

TEST_F(ProgramCommands, ADryRunChangesNothingAndARunSaysWhatItDid) {
  for (const auto& command : allCommands()) {
    const auto name = textOf(command.words);
    const auto call = callOf(command);
    // Without an option for it, a command changes nothing at all.
    const auto before = snapshot(place.path());
    const auto dry = run(command.takesDryRun ? joined(call, {"--dry-run"}) : call);
    EXPECT_EQ(dry.exitCode, 0) << name << dry.err;
    EXPECT_NE(dry.out, "") << name;
    EXPECT_EQ(changedSince(before), "") << name;
    if (!command.takesDryRun) continue;
    EXPECT_THAT(dry.out, AnyOf(HasSubstr("would "), HasSubstr("aus ü/schnitt e/"))) << name;
    const auto facts = parsed(succeed(joined(call, {"--dry-run", "--json"})));
    EXPECT_TRUE(facts["dryRun"].asBool()) << name;
    EXPECT_EQ(changedSince(before), "") << name;
  }
}

TEST_F(ProgramCommands, QuietlyThereIsOneObjectAndNothingElse) {
  for (const auto& command : allCommands()) {
    const auto name = textOf(command.words);
    const auto before = snapshot(place.path());
    const auto result = run(joined(callOf(command), {"--json", "--quiet"}));
    EXPECT_EQ(result.exitCode, 0) << name << result.err;
    EXPECT_EQ(result.err, "") << name;
    const auto facts = parsed(result.out);
    EXPECT_TRUE(facts.isObject() && !facts.empty()) << name << result.out;
    EXPECT_FALSE(facts.isMember("error")) << name;
    EXPECT_EQ(!changedSince(before).empty(), command.takesDryRun) << name;
  }
}

TEST_F(ProgramCommands, WhatFailsTellsProgramsWhy) {
  struct Row {
    Words arguments;
    int exitCode;
    std::string reason;
  };
  for (const auto& [arguments, exitCode, reason] :
       {Row{{"list", "none", "--json"}, 1, "there is no project 'none'"},
        Row{{"create", "a/b", "--json"}, 2, "cannot name a project"},
        Row{{"create", "--json"}, 2, "PROJECT is required"},
        Row{{"--json", "nonsense"}, 2, "--help lists what there is"}}) {
    const auto result = run(arguments);
    EXPECT_EQ(result.exitCode, exitCode) << reason;
    EXPECT_THAT(parsed(result.out)["error"].asString(), HasSubstr(reason));
    EXPECT_THAT(result.err, HasSubstr("samplebench: "));
  }
}

TEST_F(ProgramCommands, DryRunsRefuseWhatRunsRefuse) {
  place.write("file", "mine");
  const std::string picture = "b ild é.png";
  const std::vector<Words> calls{
      {"create", "a/b"},
      {"create", project},
      {"class", "add", project, "a,b"},
      {"import", project, "a/b", "fotos ü"},
      {"mark", project, picture, "Round", "0,0", "1,1", "--class", "alt ä"},
      {"render", project, picture, "-o", "missing/x.png"},
      {"render", project, picture, "-o", "x.nothing"},
      {"magnify", project, picture, "--at", "2,2", "-o", "x.png"},
      {"crop", project, picture, "-o", "file/below"},
      {"gallery", project, "--report", "missing/x.html"},
      {"generate", project, "--output", "fotos ü"},
      {"generate", project, "--output", "file/below"},
      {"generate", project, "--output", "set", "--set", "WIDTH"},
      {"view", "von hand ü", "-o", "von hand ü/d ü.png"},
      {"weights", "import", "none", "--directory", "ge wichte ü"},
      {"weights", "remove", "none", "--directory", "ge wichte ü"},
      {"labels", "export", project, "fotos ü", "--format", "Darknet"},
      {"user", "create", "a/b", "--users", "leu te ü"},
      {"user", "create", "Ann é", "--users", "leu te ü"},
      {"user", "create", "Cay", "--users", "file/below"},
      {"user", "remove", "Cay", "--users", "leu te ü"},
      {"demo", "file"},
      {"demo", "fotos"},
      {"demo", "dëmo", "--pictures", "missing"}};
  for (const auto& call : calls) {
    if (call == Words{"demo", "fotos"}) place.write("fotos/mine", "mine");
    const auto dry = run(joined(call, {"--dry-run"}));
    const auto real = run(call);
    EXPECT_NE(real.exitCode, 0) << textOf(call);
    EXPECT_EQ(dry.exitCode, real.exitCode) << textOf(call) << dry.err;
    EXPECT_EQ(dry.err.substr(dry.err.rfind("samplebench: ")),
              real.err.substr(real.err.rfind("samplebench: ")))
        << textOf(call);
  }
}

namespace {

using ProgramRights = ProgramTest;

}  // namespace

TEST_F(ProgramRights, ADryRunRefusesAPlaceThatCannotBeWrittenTo) {
  makeProject();
  succeed({"mark", "parts", "a.png", "Rect", "0,0", "0.5,0.5", "--class", "nut"});
  fs::create_directories(place / "in");
  fs::copy_file(place / "photos/a.png", place / "in/a.png");
  place.write("in/a.txt", "0 0.5 0.5 0.5 0.5\n");
  place.write("in/classes.txt", "nut\n");
  place.makeDirectory("users");
  const std::vector<Words> calls{
      {"create", "other"},
      {"create", "other", "--projects", "below/it"},
      {"mark", "parts", "a.png", "Rect", "0,0", "0.5,0.5", "--class", "nut"},
      {"import", "parts", "day2", "photos"},
      {"class", "add", "parts", "bolt"},
      {"class", "rename", "parts", "nut", "bolt"},
      {"class", "merge", "parts", "nut", "--into", "screw"},
      {"class", "delete", "parts", "screw"},
      {"class", "order", "parts", "nut", "screw"},
      {"generate", "parts", "--output", "set"},
      {"render", "parts", "a.png", "-o", "seen.png"},
      {"gallery", "parts"},
      {"crop", "parts", "a.png", "-o", "cut"},
      {"labels", "import", "parts", "day2", "in"},
      {"labels", "export", "parts", "out", "--format", "Darknet"},
      {"user", "create", "ann"},
      {"demo", "walk"},
      {"stats", "parts", "--report", "page.html"}};
  for (const auto& call : calls) {
    auto dry = call;
    dry.push_back("--dry-run");
    const auto before = contents(".");
    EXPECT_EQ(runWithoutRights(call).exitCode, 1) << textOf(call);
    const auto result = runWithoutRights(dry);
    EXPECT_EQ(result.exitCode, 1) << textOf(call) << result.out;
    EXPECT_THAT(result.err, HasSubstr("samplebench: ")) << textOf(call);
    EXPECT_EQ(contents("."), before);
    EXPECT_EQ(run(dry).exitCode, 0) << textOf(call);
  }
}

namespace {

using ProgramLock = ProgramTest;

}  // namespace

TEST_F(ProgramLock, OneCommandAtATimeChangesAProject) {
  makeProject();
  const Words mark{"mark", "parts", "a.png", "Rect", "0,0", "0.5,0.5", "--class", "nut"};
  const int directory = open((place / "projects/parts").c_str(), O_RDONLY | O_DIRECTORY);
  ASSERT_EQ(flock(directory, LOCK_EX | LOCK_NB), 0);
  const auto before = contents("projects");
  for (const auto& call : {mark,
                           {"import", "parts", "day2", "photos"},
                           {"class", "add", "parts", "bolt"},
                           {"class", "order", "parts", "nut", "screw"},
                           {"class", "rename", "parts", "nut", "bolt"},
                           {"class", "merge", "parts", "nut", "--into", "screw"},
                           {"class", "delete", "parts", "nut"},
                           {"gallery", "parts"}})
    fail(call,
         "another command works on project 'parts' (process " + std::to_string(getpid()) + ", ");
  EXPECT_EQ(contents("projects"), before);
  succeed({"list", "parts"});
  succeed({"generate", "parts", "--output", "set"});
  succeed({"class", "add", "parts", "bolt", "--dry-run"});
  close(directory);
  succeed(mark);
}

TEST_F(ProgramLock, AProjectIsMadeByOneCommandAtATime) {
  place.makeDirectory("projects/parts");
  const int directory = open((place / "projects/parts").c_str(), O_RDONLY | O_DIRECTORY);
  ASSERT_EQ(flock(directory, LOCK_EX | LOCK_NB), 0);
  fail({"create", "parts"}, "another command works on project 'parts'");
  EXPECT_TRUE(fs::is_empty(place / "projects/parts"));
  close(directory);
  std::vector<std::unique_ptr<RunningProgram>> programs;
  for (int i = 0; i < 8; ++i)
    programs.push_back(std::make_unique<RunningProgram>(
        Words{SAMPLEBENCH_PROGRAM, "create", "parts"}, place.path()));
  int made = 0;
  for (auto& program : programs) {
    const auto result = program->wait();
    if (result.exitCode == 0) {
      ++made;
    } else {
      EXPECT_THAT(result.err, testing::AnyOf(HasSubstr("another command works on project 'parts'"),
                                             HasSubstr("is there already")));
    }
  }
  EXPECT_EQ(made, 1);
  succeed({"class", "add", "parts", "nut"});
}

TEST_F(ProgramLock, ADemoHasItsDirectoryForItself) {
  for (const bool isEarlier : {false, true}) {
    auto first = start({"demo", "demo"});
    ASSERT_TRUE(first.waitForError("marking"));
    fail({"demo", "demo"}, "another command works in '");
    EXPECT_EQ(first.wait().exitCode, 0) << isEarlier;
  }
  succeed({"list", "demo", "--projects", "demo/projects"});
}

TEST_F(ProgramLock, AnExportHasItsDirectoryForItself) {
  makeProject();
  succeed({"mark", "parts", "a.png", "Rect", "0,0", "0.5,0.5", "--class", "nut"});
  Words call{"labels", "export", "parts", "out", "--format", "Darknet", "--copy"};
  succeed(call);
  const int directory = open((place / "out").c_str(), O_RDONLY | O_DIRECTORY);
  ASSERT_EQ(flock(directory, LOCK_EX | LOCK_NB), 0);
  const auto before = contents("");
  fail(call, "another command works in 'out' (process " + std::to_string(getpid()) + ", ");
  EXPECT_THAT(run(call).err, HasSubstr("); nothing was changed, try again when it is done"));
  EXPECT_EQ(contents(""), before);
  auto dry = call;
  dry.push_back("--dry-run");
  succeed(dry);
  close(directory);
  succeed(call);
}

TEST_F(ProgramLock, OfExportsAtOnceOneIsWholeAndTheOthersAreTold) {
  makeProject();
  Words call{"labels", "export", "parts", "new/place", "--format", "Darknet", "--copy"};
  Words command{SAMPLEBENCH_PROGRAM};
  command.insert(command.end(), call.begin(), call.end());
  std::vector<std::unique_ptr<RunningProgram>> programs;
  for (int i = 0; i < 8; ++i)
    programs.push_back(std::make_unique<RunningProgram>(command, place.path()));
  int done = 0;
  for (auto& program : programs) {
    const auto result = program->wait();
    if (result.exitCode == 0) {
      ++done;
    } else {
      EXPECT_EQ(result.exitCode, 1);
      EXPECT_THAT(result.err, HasSubstr("another command works in 'new/place'"));
    }
  }
  EXPECT_GE(done, 1);
  const auto files = contents("new/place");
  call[3] = "one";
  succeed(call);
  EXPECT_EQ(files.size(), contents("one").size());
}

TEST_F(ProgramLock, ASetIsNotWrittenWhereAnotherCommandWorks) {
  makeProject();
  place.makeDirectory("out");
  const int directory = open((place / "out").c_str(), O_RDONLY | O_DIRECTORY);
  ASSERT_EQ(flock(directory, LOCK_EX | LOCK_NB), 0);
  const auto before = contents("");
  fail({"generate", "parts", "--output", "out"}, "another command works in 'out'");
  EXPECT_EQ(contents(""), before);
  close(directory);
  succeed({"generate", "parts", "--output", "out"});
}

TEST_F(ProgramLock, MarksOfCommandsAtOnceAreThereOrRefused) {
  makeProject();
  std::vector<std::unique_ptr<RunningProgram>> programs;
  for (int i = 0; i < 8; ++i)
    programs.push_back(
        std::make_unique<RunningProgram>(Words{SAMPLEBENCH_PROGRAM, "mark", "parts", "a.png",
                                               "Rect", "0,0", "0.5,0.5", "--class", "nut"},
                                         place.path()));
  std::size_t added = 0;
  for (auto& program : programs) {
    const auto result = program->wait();
    EXPECT_THAT(result.exitCode, AnyOf(0, 1)) << result.err;
    if (result.exitCode == 0) ++added;
  }
  EXPECT_GE(added, 1U);
  EXPECT_THAT(succeed({"list", "parts"}),
              HasSubstr("total: 2 pictures, " + counted(added, "mark") + "\n"));
}

namespace {

class ProgramInterrupt : public ProgramTest {
 protected:
  /// What becomes of the program when the user stops it.
  static ProgramResult stopped(RunningProgram& program) {
    program.interrupt();
    return program.wait();
  }
};

}  // namespace

TEST_F(ProgramInterrupt, AListThatNeverComesCanBeGivenUp) {
  makeProject();
  ASSERT_EQ(mkfifo((place / "list").c_str(), 0600), 0);
  const auto before = contents("projects");
  auto program = start({"mark", "parts", "--list", "list"});
  // Opening the other end waits until the program has opened its own.
  const std::ofstream list(place / "list");
  const auto result = stopped(program);
  EXPECT_EQ(result.exitCode, 130) << result.err;
  EXPECT_THAT(result.err, HasSubstr("samplebench: interrupted\n"));
  EXPECT_EQ(contents("projects"), before);
}

TEST_F(ProgramInterrupt, AFileThatIsFetchedIsWholeOrNotThere) {
  place.makeDirectory("weights");
  for (const bool replaces : {false, true}) {
    PortalServer server;
    server.setReply(R"({"0":{"name":"w.bin","hash":"x","file_size":")" +
                    std::to_string(kServedSize) + R"(","creation_date":"today","download_link":")" +
                    server.address("/slow") + "\"}}");
    if (replaces) place.write("weights/w.bin", "earlier");
    auto program = start(
        {"weights", "get", "w.bin", "--address", server.listAddress(), "--directory", "weights"});
    ASSERT_TRUE(program.waitForError(" %)"));
    const auto result = stopped(program);
    EXPECT_EQ(result.exitCode, 130) << result.err;
    const auto files = contents("weights");
    EXPECT_EQ(files.size(), replaces ? 1U : 0U);
    if (replaces) {
      EXPECT_EQ(readFile(place / "weights/w.bin"), "earlier");
    }
  }
}

namespace {

/// What the program shows on a terminal.
std::string shownOnTerminal(const std::vector<std::string>& arguments, const std::string& directory,
                            bool noColor) {
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) {
    if (chdir(directory.c_str()) != 0) _exit(126);
    noColor ? setenv("NO_COLOR", "1", 1) : unsetenv("NO_COLOR");
    std::vector<char*> words{const_cast<char*>(SAMPLEBENCH_PROGRAM)};
    for (const auto& argument : arguments)
      words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    execv(words[0], words.data());
    _exit(127);
  }
  std::string shown;
  char bytes[4096];
  for (ssize_t count = 0; (count = read(terminal, bytes, sizeof bytes)) > 0;)
    shown.append(bytes, static_cast<std::size_t>(count));
  close(terminal);
  waitpid(child, nullptr, 0);
  return shown;
}

using ProgramTerminal = ProgramTest;

}  // namespace

TEST_F(ProgramTerminal, ABarIsDrawnUnlessNoColourIsWanted) {
  makeProject();
  const auto bar = shownOnTerminal({"gallery", "parts"}, place.path(), false);
  EXPECT_THAT(bar, AllOf(HasSubstr("\x1b[K"), HasSubstr("] 2/2  100 %")));
  const auto plain = shownOnTerminal({"gallery", "parts"}, place.path(), true);
  EXPECT_THAT(plain, AllOf(HasSubstr("2 of 2 (100 %)"), Not(HasSubstr("\x1b"))));
}

namespace {

void expectKeysInOneStyle(const Json::Value& value, const std::string& command) {
  if (value.isObject()) {
    for (const auto& key : value.getMemberNames()) {
      EXPECT_THAT(key, testing::MatchesRegex("[a-z][a-zA-Z]*")) << command;
      expectKeysInOneStyle(value[key], command);
    }
  } else if (value.isArray()) {
    for (const auto& each : value)
      expectKeysInOneStyle(each, command);
  }
}

using ProgramJson = ProgramTest;

}  // namespace

TEST_F(ProgramJson, AllKeysAreInOneStyle) {
  makeProject();
  place.write("app.cfg", "");
  succeed({"mark", "parts", "a.png", "Rect", "0,0", "0.5,0.5", "--class", "nut"});
  for (const Words& call :
       {Words{"list", "parts"}, Words{"list", "parts", "--picture", "a.png"},
        Words{"stats", "parts"}, Words{"gallery", "parts"},
        Words{"generate", "parts", "--output", "set", "--keep-together", "source"},
        Words{"verify", "set"}, Words{"view", "set", "-o", "sheet.png"},
        Words{"labels", "export", "parts", "out", "--format", "Darknet"},
        Words{"labels", "import", "parts", "day2", "out"}, Words{"user", "create", "ann"},
        Words{"user", "list"}, Words{"config", "app.cfg"}, Words{"demo", "demo"},
        Words{"remove", "mark", "parts", "a.png", "1", "--set", "day1"}}) {
    auto words = call;
    words.push_back("--json");
    Json::Value facts;
    std::istringstream(run(words).out) >> facts;
    EXPECT_FALSE(facts.empty()) << call[0];
    expectKeysInOneStyle(facts, call[0]);
  }
}
