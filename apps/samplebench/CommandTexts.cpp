#include "CommandTexts.h"

#include <algorithm>
#include <map>
#include <sstream>

namespace {

using Options = std::vector<const CLI::Option*>;

// A command as it is called, "class add"; the program itself has no path.
struct CommandText {
  std::string path;
  const CLI::App* command;
};

std::vector<const CLI::App*> commandsBelow(const CLI::App& command) {
  return command.get_subcommands([](const CLI::App*) { return true; });
}

void collect(const CLI::App& command, const std::string& path, std::vector<CommandText>& all) {
  all.push_back({path, &command});
  for (const auto* below : commandsBelow(command))
    collect(*below, path.empty() ? below->get_name() : path + " " + below->get_name(), all);
}

// Each behind the group that it belongs to; the first one is the program itself.
std::vector<CommandText> allCommands(const CLI::App& app) {
  std::vector<CommandText> all;
  collect(app, "", all);
  return all;
}

std::vector<std::string> namesOf(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const auto& name : option.get_snames())
    names.push_back("-" + name);
  for (const auto& name : option.get_lnames())
    names.push_back("--" + name);
  return names;
}

bool takesValue(const CLI::Option& option) {
  return option.get_items_expected_max() > 0;
}

Options optionsOf(const CLI::App& command, bool positional) {
  return command.get_options(
      [=](const CLI::Option* option) { return option->get_positional() == positional; });
}

// The text as man is to show it: a line that starts with a dot or a quote would be a request, and a
// minus is to stay one.
std::string manText(const std::string& text) {
  std::string result;
  bool atStart = true;
  for (const char letter : text) {
    if (atStart && (letter == '.' || letter == '\'')) result += "\\&";
    if (letter == '\\') {
      result += "\\e";
    } else if (letter == '-') {
      result += "\\-";
    } else {
      result += letter;
    }
    atStart = letter == '\n';
  }
  return result;
}

// With its lines as they are, where they are examples or a list.
void writeBlock(std::ostream& page, const std::string& text) {
  page << ".nf\n" << manText(text) << "\n.fi\n";
}

void writeOption(std::ostream& page, const CLI::Option& option) {
  page << ".TP\n\\fB" << manText(joined(namesOf(option))) << "\\fR";
  if (takesValue(option)) page << " \\fI" << manText(option.get_type_name()) << "\\fR";
  page << "\n" << manText(option.get_description());
  if (!option.get_default_str().empty() && takesValue(option))
    page << " (default: " << manText(option.get_default_str()) << ")";
  page << "\n";
}

std::string argumentText(const CLI::Option& argument) {
  const auto name = argument.get_name(true) + (argument.get_expected_max() > 1 ? "..." : "");
  return argument.get_required() ? name : "[" + name + "]";
}

bool isHelp(const CLI::Option& option) {
  return option.check_lname("help");
}

void writeEntry(std::ostream& page, const CommandText& entry) {
  page << ".SS \"" << manText(entry.path);
  for (const auto* argument : optionsOf(*entry.command, true))
    page << ' ' << manText(argumentText(*argument));
  page << "\"\n" << manText(entry.command->get_description()) << "\n";
  if (!commandsBelow(*entry.command).empty()) return;
  for (const auto* argument : optionsOf(*entry.command, true))
    page << ".TP\n\\fI" << manText(argument->get_name(true)) << "\\fR\n"
         << manText(argument->get_description()) << "\n";
  for (const auto* option : optionsOf(*entry.command, false))
    if (!isHelp(*option)) writeOption(page, *option);
  page << ".PP\n";
  writeBlock(page, entry.command->get_footer());
}

std::string quotedForShell(const std::string& text) {
  std::string result = "'";
  for (const char letter : text)
    result += letter == '\'' ? "'\\''" : std::string(1, letter);
  return result + "'";
}

using Lines = std::vector<std::string>;

std::string textOf(const Lines& lines) {
  std::string text;
  for (const auto& line : lines)
    text += (text.empty() ? "" : "\n") + line;
  return text;
}

Lines choicesOf(const ProgramOptions& program, const CLI::Option* option) {
  const auto choices = program.choices.find(option);
  return choices == program.choices.end() ? Lines() : choices->second();
}

// What may follow a command, a word a line: the commands below it, its options and those of the
// program, and what an argument may be.
Lines wordsAfter(const CLI::App& app, const CLI::App& command, const ProgramOptions& program) {
  Lines words;
  for (const auto* below : commandsBelow(command))
    words.push_back(below->get_name());
  for (const auto* argument : optionsOf(command, true))
    for (const auto& choice : choicesOf(program, argument))
      words.push_back(choice);
  for (const auto* option : optionsOf(command, false))
    words.push_back(namesOf(*option).back());
  if (&command != &app)
    for (const auto* option : optionsOf(app, false))
      if (const auto name = namesOf(*option).back();
          !isHelp(*option) && !option->check_lname("version") &&
          std::find(words.begin(), words.end(), name) == words.end())
        words.push_back(name);
  return words;
}

// An option whose value comes next, with what that may be; without choices it is a file or free.
struct Value {
  // Path of the command and name of the option.
  std::string place;
  Lines choices;
};

std::vector<Value> valuesOf(const CommandText& entry, const ProgramOptions& program) {
  std::vector<Value> values;
  for (const auto* option : optionsOf(*entry.command, false))
    if (takesValue(*option))
      for (const auto& name : namesOf(*option))
        values.push_back({entry.path + " " + name, choicesOf(program, option)});
  return values;
}

// The paths of all commands but the program's own.
std::string pathList(const CLI::App& app, const std::string& separator) {
  std::string list;
  for (const auto& [path, command] : allCommands(app))
    if (!path.empty()) list += (list.empty() ? "" : separator) + quotedForShell(path);
  return list;
}

// For bash and zsh: finds the command in front of the word to complete, and puts what that word may
// be into `next`. Nothing stands there if it is a file or free.
void writeSearch(std::ostream& script, const CLI::App& app, const ProgramOptions& program,
                 const std::string& words, const std::string& before) {
  script << "  local word place= next=\n  for word in " << words
         << "; do\n    case \"${place:+$place }$word\" in\n      " << pathList(app, "|")
         << ") place=\"${place:+$place }$word\" ;;\n    esac\n  done\n  case \"$place " << before
         << "\" in\n";
  for (const auto& entry : allCommands(app))
    for (const auto& [place, choices] : valuesOf(entry, program))
      // The options of the program may stand behind any command.
      script << "    " << (entry.path.empty() ? "*" : "") << quotedForShell(place)
             << ") next=" << quotedForShell(textOf(choices)) << " ;;\n";
  script << "    *) case \"$place\" in\n";
  for (const auto& [path, command] : allCommands(app))
    script << "      " << quotedForShell(path)
           << ") next=" << quotedForShell(textOf(wordsAfter(app, *command, program))) << " ;;\n";
  script << "    esac ;;\n  esac\n";
}

void writeBash(std::ostream& script, const CLI::App& app, const ProgramOptions& program) {
  script << "# Completion of samplebench in bash.\n_samplebench() {\n";
  writeSearch(script, app, program, "\"${COMP_WORDS[@]:1:COMP_CWORD-1}\"",
              "${COMP_WORDS[COMP_CWORD-1]}");
  script << "  local IFS=$'\\n' word\n  COMPREPLY=()\n"
            "  for word in $(compgen -W \"$next\" -- \"${COMP_WORDS[COMP_CWORD]}\"); do\n"
            "    COMPREPLY+=(\"$(printf %q \"$word\")\")\n  done\n}\n"
            "complete -o bashdefault -o default -F _samplebench samplebench\n";
}

void writeZsh(std::ostream& script, const CLI::App& app, const ProgramOptions& program) {
  script << "#compdef samplebench\n# Completion of samplebench in zsh.\n_samplebench() {\n";
  writeSearch(script, app, program, "${words[2,CURRENT-1]}", "${words[CURRENT-1]}");
  script << "  [[ -z $next ]] || compadd -- \"${(@f)next}\"\n"
            "  [[ ${words[CURRENT]} == -* ]] || _files\n}\n_samplebench \"$@\"\n";
}

void writeFish(std::ostream& script, const CLI::App& app, const ProgramOptions& program) {
  const auto print = [](const Lines& lines) {
    std::string command = "printf '%s\\n'";
    for (const auto& line : lines)
      command += " " + quotedForShell(line);
    return lines.empty() ? std::string("true") : command;
  };
  script << "# Completion of samplebench in fish.\nfunction __samplebench_next\n"
            "  set -l words (commandline -opc)\n  set -l place ''\n  for word in $words[2..-1]\n"
            "    switch (string trim -- \"$place $word\")\n      case "
         << pathList(app, " ")
         << "\n        set place (string trim -- \"$place $word\")\n    end\n  end\n"
            "  switch \"$place $words[-1]\"\n";
  for (const auto& entry : allCommands(app))
    for (const auto& [place, choices] : valuesOf(entry, program))
      script << "    case " << quotedForShell((entry.path.empty() ? "*" : "") + place) << "\n      "
             << print(choices) << "\n";
  script << "    case '*'\n      switch \"$place\"\n";
  for (const auto& [path, command] : allCommands(app))
    script << "        case " << quotedForShell(path) << "\n          "
           << print(wordsAfter(app, *command, program)) << "\n";
  script << "      end\n  end\nend\ncomplete -c samplebench -a '(__samplebench_next)'\n";
}

using Writer = void (*)(std::ostream&, const CLI::App&, const ProgramOptions&);

const std::map<std::string, Writer>& writers() {
  static const std::map<std::string, Writer> all{
      {"bash", writeBash}, {"fish", writeFish}, {"zsh", writeZsh}};
  return all;
}

Lines shells() {
  Lines names;
  for (const auto& [shell, writer] : writers())
    names.push_back(shell);
  return names;
}

}  // namespace

void writeManual(std::ostream& page, const CLI::App& app) {
  page << ".TH SAMPLEBENCH 1 \"\" \"samplebench " SAMPLEBENCH_VERSION
          "\" \"User commands\"\n"
          ".SH NAME\nsamplebench \\- prepare training data for object detectors\n"
          ".SH SYNOPSIS\n\\fBsamplebench\\fR [\\fIOPTION\\fR]... \\fICOMMAND\\fR "
          "[\\fIARGUMENT\\fR]...\n.SH DESCRIPTION\n"
       << manText(app.get_description()) << "\n.SH OPTIONS\nThey may stand behind the command.\n";
  for (const auto* option : optionsOf(app, false))
    writeOption(page, *option);
  page << ".SH COMMANDS\n";
  for (const auto& entry : allCommands(app))
    if (!entry.path.empty()) writeEntry(page, entry);
  page << ".SH EXAMPLES AND EXIT STATUS\n";
  writeBlock(page, app.get_footer());
}

void writeCompletion(std::ostream& script, const CLI::App& app, const ProgramOptions& program,
                     const std::string& shell) {
  requireChoice("shell", shell, shells(), exitUsage);
  writers().at(shell)(script, app, program);
}

void addTextCommands(CLI::App& app, ProgramOptions& program) {
  addCommand(app, program,
             {"manual", "Writes the manual page, in the language of man.",
              "manual > samplebench.1 && man -l samplebench.1"},
             [&app](Output& output) {
               output.setQuiet();
               std::ostringstream page;
               writeManual(page, app);
               output.text("manual", page.str());
             });
  const auto shell = std::make_shared<std::string>();
  auto* command =
      addCommand(app, program,
                 {"completion", "Writes a script that completes what is typed, in a shell.",
                  "completion bash > ~/.local/share/bash-completion/completions/samplebench"},
                 [&app, &program, shell](Output& output) {
                   // To know what options take, the library is asked, and its log is no part of it.
                   output.setQuiet();
                   std::ostringstream script;
                   writeCompletion(script, app, program, *shell);
                   output.text("script", script.str());
                 });
  program.choices[command->add_option("SHELL", *shell, "bash, fish or zsh")->required()] = shells;
}
