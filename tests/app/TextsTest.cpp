#include <gmock/gmock.h>

#include <CLI/CLI.hpp>

#include "Arguments.h"
#include "CommandLine.h"
#include "ProgramRunner.h"

namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

Words linesOf(const std::string& text) {
  Words lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);)
    lines.push_back(line);
  return lines;
}

/// All commands and groups, as they are called, with their options.
void collect(const CLI::App& app, const std::string& path,
             std::map<std::string, std::vector<std::string>>& options) {
  for (const auto* option : app.get_options())
    if (!option->get_positional() && !option->check_lname("help"))
      options[path].push_back("--" + option->get_lnames().front());
  for (const auto* below : app.get_subcommands([](const CLI::App*) { return true; }))
    collect(*below, path.empty() ? below->get_name() : path + " " + below->get_name(), options);
}

class ProgramTexts : public ProgramTest {
 protected:
  ProgramResult shell(const Words& command) const {
    return RunningProgram(command, place.path()).wait();
  }

  /// What the shell offers for the last word.
  Words offered(const std::string& shellName, const Words& words) const {
    const auto script = place.write("script", succeed({"completion", shellName}));
    std::string quoted;
    for (const auto& word : words)
      quoted += " '" + word + "'";
    const auto last = std::to_string(words.size() - 1);
    if (shellName == "bash")
      return linesOf(shell({"/bin/bash", "-c",
                            ". " + script + "; COMP_WORDS=(" + quoted + "); COMP_CWORD=" + last +
                                "; _samplebench; printf '%s\\n' \"${COMPREPLY[@]}\""})
                         .out);
    if (shellName == "zsh")
      return linesOf(
          shell({"/bin/zsh", "-f", "-c",
                 "compadd() { shift; print -l -- \"${(M)@:#${words[CURRENT]}*}\" }\n"
                 "_files() { print FILES }\nwords=(" +
                     quoted + "); CURRENT=" + std::to_string(words.size()) + "; . " + script})
              .out);
    std::string line;
    for (const auto& word : words)
      line += (line.empty() ? "" : " ") + word;
    return linesOf(shell({"/usr/bin/fish", "--no-config", "-c",
                          "source " + script + "; complete -C '" + line + "'"})
                       .out);
  }
};

}  // namespace

TEST_F(ProgramTexts, NothingStandsBesideThem) {
  for (const auto& call : {Words{"manual"}, Words{"completion", "bash"}}) {
    const auto result = run(call);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_NE(result.out, "");
  }
}

TEST_F(ProgramTexts, TheVersionIsTold) {
  EXPECT_THAT(succeed({"--version"}), ::testing::MatchesRegex("samplebench [0-9]+\\.[0-9.]+\n"));
}

TEST_F(ProgramTexts, EveryHelpNamesJsonAndQuiet) {
  CLI::App app;
  ProgramOptions program;
  describeProgram(app, program);
  std::map<std::string, std::vector<std::string>> described;
  collect(app, "", described);
  for (const auto* group : {"class", "remove", "labels", "weights", "user"})
    described[group];
  EXPECT_GT(described.size(), 35U);
  for (const auto& [path, options] : described) {
    Words call;
    std::istringstream words(path);
    for (std::string word; words >> word;)
      call.push_back(word);
    call.emplace_back("--help");
    EXPECT_THAT(succeed(call), AllOf(HasSubstr("--json"), HasSubstr("--quiet"))) << path;
  }
}

TEST_F(ProgramTexts, JsonAndQuietStandBeforeACommandOrBehindIt) {
  makeProject();
  for (const auto& call : {Words{"--json", "--quiet", "class", "list", "parts"},
                           Words{"class", "--json", "list", "--quiet", "parts"},
                           Words{"class", "list", "parts", "--quiet", "--json"}}) {
    const auto result = run(call);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_THAT(result.out, HasSubstr("\"classes\" :"));
  }
}

TEST_F(ProgramTexts, TheManualHasEveryCommandAndOption) {
  CLI::App app;
  ProgramOptions program;
  describeProgram(app, program);
  std::map<std::string, std::vector<std::string>> described;
  collect(app, "", described);
  const auto page = place.write("samplebench.1", succeed({"manual"}));
  const auto shown =
      shell({"/usr/bin/env", "MANWIDTH=200", "LC_ALL=C.UTF-8", "man", "-l", "--warnings", page});
  EXPECT_EQ(shown.exitCode, 0);
  EXPECT_EQ(shown.err, "");
  std::string section;
  std::map<std::string, std::string> sections;
  for (const auto& line : linesOf(shown.out)) {
    // Headings of commands stand three blanks in.
    if (line.starts_with("   ") && line.size() > 3 && line[3] != ' ') {
      section = line.substr(3);
      for (const auto& [path, options] : described)
        if (section.starts_with(path + " ")) section = path;
    }
    sections[section] += line + "\n";
  }
  EXPECT_GT(described.size(), 30U);
  for (const auto& [path, options] : described) {
    EXPECT_TRUE(sections.contains(path)) << path;
    for (const auto& option : options)
      EXPECT_THAT(sections[path], HasSubstr(option)) << path;
  }
  EXPECT_THAT(shown.out, AllOf(HasSubstr("samplebench - prepare training data"),
                               HasSubstr("130 interrupted"), HasSubstr("PolyLine Closed")));
}

TEST_F(ProgramTexts, ScriptsAreSoundAndOtherShellsAreRefused) {
  for (const auto& [name, path] : std::map<std::string, std::string>{
           {"bash", "/bin/bash"}, {"zsh", "/bin/zsh"}, {"fish", "/usr/bin/fish"}}) {
    const auto script = place.write("script", succeed({"completion", name}));
    const auto result = shell({path, "-n", script});
    EXPECT_EQ(result.exitCode, 0) << name << result.err;
    EXPECT_EQ(result.err, "") << name;
  }
  fail({"completion", "csh"}, "there is no shell 'csh'; choose from: bash, fish, zsh", 2);
}

TEST_F(ProgramTexts, BashCompletesCommandsOptionsAndValues) {
  EXPECT_THAT(offered("bash", {"samplebench", "ge"}), ElementsAre("generate"));
  EXPECT_THAT(offered("bash", {"samplebench", "class", "re"}), ElementsAre("rename"));
  // A class may be called like a command.
  EXPECT_THAT(offered("bash", {"samplebench", "class", "add", "parts", "list", "--c"}),
              ElementsAre("--color"));
  EXPECT_THAT(offered("bash", {"samplebench", "labels", "export", "parts", "out", "--format", ""}),
              ElementsAre("COCO", "Darknet", "VOC"));
  EXPECT_THAT(offered("bash", {"samplebench", "mark", "parts", "a.png", "Circle"}),
              ElementsAre("Circle", "Circle\\ Multiple"));
  EXPECT_THAT(offered("bash", {"samplebench", "completion", ""}),
              AllOf(Contains("zsh"), Contains("--quiet"), Not(Contains("create"))));
  // Files: the shell looks for them itself.
  EXPECT_THAT(offered("bash", {"samplebench", "render", "p", "a.png", "-o", ""}), ElementsAre(""));
  EXPECT_THAT(offered("bash", {"samplebench", "list", "--projects", ""}), ElementsAre(""));
}

TEST_F(ProgramTexts, ZshCompletesCommandsOptionsAndValues) {
  EXPECT_THAT(offered("zsh", {"samplebench", "ge"}), ElementsAre("generate", "FILES"));
  EXPECT_THAT(offered("zsh", {"samplebench", "class", "add", "parts", "list", "--c"}),
              ElementsAre("--color"));
  EXPECT_THAT(offered("zsh", {"samplebench", "magnify", "p", "a.png", "--mode", "Edge"}),
              ElementsAre("Edge", "Edge x2", "FILES"));
  EXPECT_THAT(offered("zsh", {"samplebench", "list", "--projects", ""}), ElementsAre("FILES"));
}

TEST_F(ProgramTexts, FishCompletesCommandsOptionsAndValues) {
  EXPECT_THAT(offered("fish", {"samplebench", "ge"}), ElementsAre("generate"));
  EXPECT_THAT(offered("fish", {"samplebench", "class", "add", "parts", "list", "--co"}),
              ElementsAre("--color"));
  EXPECT_THAT(offered("fish", {"samplebench", "magnify", "p", "a.png", "--mode", "Edge"}),
              ElementsAre("Edge", "Edge x2"));
  EXPECT_THAT(offered("fish", {"samplebench", "list", "--projects", "xyz"}), IsEmpty());
}
