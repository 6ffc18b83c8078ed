#include "WeightsCommand.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <random>
#include <stdexcept>

#include "CommandError.h"
#include "CommandLine.h"
#include "Interrupt.h"
#include "Platform.h"
#include "Progress.h"
#include "TNV_SampleBenchNative/WTNVProject.h"

namespace fs = std::filesystem;

namespace {

struct WeightsOptions {
  std::string address;
  std::string directory;
  std::string name;
};

// The library hands the downloads out with a project, which needs not be on disk.
class Downloads {
 public:
  Downloads() : project("weights", "", "", ""), handler(project.getHndDownload()) {}

 private:
  WTNVProject project;

 public:
  WTNVHandlerDownload handler;
};

// Callbacks of the library are plain functions; what they work on during a download stands here.
struct Transfer {
  Progress* progress = nullptr;
  fs::path part;
  fs::path whole;
  std::size_t size = 0;
  // Then the part lies beside the file.
  bool replaces = false;
};
Transfer transfer;

std::size_t sizeOf(const fs::path& file) {
  std::error_code error;
  const auto size = fs::file_size(file, error);
  return error ? 0 : static_cast<std::size_t>(size);
}

void onUpdate() {
  stopIfInterrupted();
  const auto here = sizeOf(transfer.replaces ? transfer.part : transfer.whole);
  transfer.progress->moveTo(std::min(here, transfer.size));
}

std::string directoryOf(const WeightsOptions& options) {
  if (!fs::is_directory(options.directory))
    throw CommandError("'" + options.directory + "' is no directory; make it first");
  return (fs::path(options.directory) / "").generic_string();
}

std::string stateOf(const WTNVDownloadFile& file, const std::string& directory) {
  std::error_code error;
  if (fs::is_directory(directory + file.wGetFileName(), error)) return "a directory";
  if (!file.wGetStateDownloadable()) return "only here";
  if (!file.wGetStateDownloaded()) return "not fetched";
  if (!file.wGetStateFileSizeValid()) return "damaged: wrong size";
  return file.wGetStateMD5Valid() ? "here and whole" : "damaged: wrong content";
}

// Also a link that leads nowhere.
bool isThere(const fs::path& path) {
  std::error_code error;
  return fs::exists(fs::symlink_status(path, error));
}

// The library looks into every file of the directory that it lists. To look one up, it gets a
// directory with nothing but a link to that one.
class OneFile {
 public:
  OneFile(const std::string& directory, const std::string& name) : listed(directory) {
    const fs::path file(name);
    if (file.empty() || file != file.filename()) return;
    place = newDirectory();
    if (place.empty()) return;
    std::error_code error;
    const auto target = fs::absolute(directory / file);
    if (isThere(target)) fs::create_symlink(target, place / file, error);
    // Where there are no links, the whole directory it is.
    if (!error) listed = (place / "").generic_string();
  }
  ~OneFile() {
    std::error_code error;
    if (!place.empty()) fs::remove_all(place, error);
  }
  OneFile(const OneFile&) = delete;
  OneFile& operator=(const OneFile&) = delete;

  const std::string& directory() const { return listed; }

 private:
  static fs::path newDirectory() {
    std::error_code error;
    const auto above = fs::temp_directory_path(error);
    std::random_device random;
    for (int i = 0; !error && i < 100; ++i) {
      const auto fresh = above / ("samplebench-" + std::to_string(random()));
      if (fs::create_directory(fresh, error)) return fresh;
    }
    return {};
  }

  std::string listed;
  fs::path place;
};

[[noreturn]] void refuseReply(const std::string& address, const std::string& reason) {
  throw CommandError("the reply of '" + address + "' is no list of files: " + reason +
                     "; see that the address is that of the portal");
}

std::vector<WTNVDownloadFile> filesOf(Downloads& downloads, const std::string& address,
                                      const std::string& directory) {
  try {
    return downloads.handler.wGetAllFiles(address, directory);
  } catch (const std::invalid_argument&) {
    refuseReply(address, "the size of a file is no number");
  } catch (const std::out_of_range&) {
    refuseReply(address, "the size of a file is too large");
  } catch (const std::exception&) {
    refuseReply(address, "it is built in another way");
  }
}

bool isOffered(const WTNVDownloadFile& file) {
  return file.wGetStateDownloadable();
}

// With its state in the directory.
WTNVDownloadFile offeredFile(Downloads& downloads, const WeightsOptions& options,
                             const std::string& directory) {
  const OneFile one(directory, options.name);
  std::vector<std::string> offered;
  for (const auto& file : filesOf(downloads, options.address, one.directory())) {
    if (!isOffered(file)) continue;
    if (file.wGetFileName() == options.name) return file;
    offered.push_back(file.wGetFileName());
  }
  if (offered.empty())
    throw CommandError("the portal cannot be reached or offers nothing; check the address");
  throw CommandError("the portal has no file '" + options.name +
                     "'; choose from: " + joined(offered));
}

std::string schemeOf(const std::string& link) {
  const auto end = link.find("://");
  // What the network library takes such a link for.
  if (end == std::string::npos) return "http";
  auto scheme = link.substr(0, end);
  std::transform(scheme.begin(), scheme.end(), scheme.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return scheme;
}

void requireLink(const std::string& name, const std::string& link) {
  if (link.empty())
    throw CommandError("the portal gives no link for '" + name + "'; ask those who run it");
  const auto scheme = schemeOf(link);
  const bool isKnown = scheme == "http" || scheme == "https" || scheme == "file";
  if (!isKnown)
    throw CommandError("the link of '" + name + "' is none of http, https and file: '" + link +
                       "'; ask those who run the portal");
}

void requireFreePlace(const std::string& target) {
  std::error_code error;
  if (isThere(target) && !fs::is_regular_file(target, error))
    throw CommandError("'" + target + "' is no file; move it away first");
}

std::string whatToDo(const std::string& link, const std::string& directory) {
  const auto space = "'" + directory + "' can be written to and has space";
  return schemeOf(link) == "file" ? "see that it is there, and that " + space
                                  : "see that " + space + ", or try again later";
}

void requireFetchable(const WTNVDownloadFile& file, const std::string& directory) {
  requireLink(file.wGetFileName(), file.wGetDownloadAddress());
  requireFreePlace(directory + file.wGetFileName());
}

void tell(const std::string& file, Output& output) {
  output.fact("file", file);
}

// What an interrupt leaves is no whole file.
bool download(Downloads& downloads, const WTNVDownloadFile& file, const std::string& directory) {
  const platform::InterruptCatcher catcher;
  try {
    return downloads.handler.wDownloadFile(file, directory);
  } catch (const CommandError&) {
    std::error_code error;
    fs::remove(transfer.replaces ? transfer.part : transfer.whole, error);
    throw;
  }
}

void fetch(Downloads& downloads, const WTNVDownloadFile& file, const std::string& directory,
           Output& output) {
  const auto link = file.wGetDownloadAddress();
  const auto size = static_cast<std::size_t>(std::max(file.wGetFileSize(), 0));
  Progress progress(size, output);
  const fs::path target = fs::path(directory) / file.wGetFileName();
  transfer = {&progress, target.string() + ".part", target, size, fs::exists(target)};
  downloads.handler.setCBDownloadUpdate(onUpdate);
  const bool fetched = download(downloads, file, directory);
  progress.finish();
  downloads.handler.setCBDownloadUpdate(nullptr);
  if (!fetched)
    throw CommandError("'" + file.wGetFileName() + "' could not be fetched from '" + link + "'; " +
                       whatToDo(link, directory));
}

void runList(const WeightsOptions& options, Output& output) {
  Downloads downloads;
  const auto directory = directoryOf(options);
  const auto files = filesOf(downloads, options.address, directory);
  std::vector<TableRow> rows;
  for (const auto& file : files)
    rows.push_back(
        {file.wGetFileName(), file.wGetFileSize(), file.wGetTimeStamp(), stateOf(file, directory)});
  output.table("files", {"file", "bytes", "date", "state"}, rows);
  if (std::none_of(files.begin(), files.end(), isOffered))
    throw CommandError("the portal cannot be reached or offers nothing; check the address");
}

void runGet(const WeightsOptions& options, Output& output) {
  Downloads downloads;
  const auto directory = directoryOf(options);
  const auto wanted = offeredFile(downloads, options, directory);
  tell(directory + options.name, output);
  output.fact("bytes", wanted.wGetFileSize());
  output.fact("wasThere", wanted.wGetStateMD5Valid());
  if (wanted.wGetStateMD5Valid()) {
    output.say(directory + options.name + " is there already and whole");
    return;
  }
  requireFetchable(wanted, directory);
  if (output.isDryRun()) {
    output.say("would fetch " + directory + options.name + " (" +
               std::to_string(wanted.wGetFileSize()) + " bytes) from " +
               wanted.wGetDownloadAddress());
    return;
  }
  fetch(downloads, wanted, directory, output);
  const auto file = offeredFile(downloads, options, directory);
  if (!file.wGetStateMD5Valid())
    throw CommandError("'" + options.name + "' came, but is " + stateOf(file, directory) +
                       "; fetch it again, or ask those who run the portal");
  output.say("fetched " + directory + options.name + " (" + std::to_string(file.wGetFileSize()) +
             " bytes, whole)");
}

void copy(const std::string& file, const std::string& directory) {
  Downloads downloads;
  bool copied = false;
  const platform::InterruptCatcher catcher;
  try {
    copied = downloads.handler.wImportFile(file, directory);
  } catch (const fs::filesystem_error&) {
    // That it failed is said below.
  }
  if (!copied)
    throw CommandError("'" + file + "' could not be copied to '" + directory +
                       "'; see that it can be read, and that '" + directory +
                       "' can be written to and has space");
}

void runImport(const WeightsOptions& options, Output& output) {
  const auto directory = directoryOf(options);
  const auto name = fs::path(options.name).filename().string();
  if (!fs::is_regular_file(options.name)) throw CommandError("'" + options.name + "' is no file");
  if (fs::exists(directory + name))
    throw CommandError("'" + directory + name + "' is there already; remove it first");
  if (!output.isDryRun()) copy(options.name, directory);
  tell(directory + name, output);
  output.say(std::string(output.told("imported ", "would copy it to ")) + directory + name);
}

bool remove(Downloads& downloads, const WTNVDownloadFile& file, const std::string& directory,
            const Output& output) {
  if (!output.isDryRun()) return downloads.handler.wRemoveFile(file, directory);
  std::error_code error;
  return !fs::is_directory(fs::symlink_status(directory + file.wGetFileName(), error));
}

void runRemove(const WeightsOptions& options, Output& output) {
  Downloads downloads;
  const auto directory = directoryOf(options);
  const OneFile one(directory, options.name);
  for (const auto& file : downloads.handler.wGetAllFiles("", one.directory())) {
    if (file.wGetFileName() != options.name) continue;
    if (!remove(downloads, file, directory, output))
      throw CommandError("'" + directory + options.name +
                         "' could not be removed; see that it is a file, and that '" + directory +
                         "' can be written to");
    tell(directory + options.name, output);
    output.say(std::string(output.told("removed ", "would remove ")) + directory + options.name);
    return;
  }
  throw CommandError("there is no '" + options.name + "' in '" + directory + "'");
}

using WeightsRun = void (*)(const WeightsOptions&, Output&);

struct WeightsCommand {
  CLI::App* app;
  WeightsOptions* options;
};

using AddCommand = decltype(&addCommand);

WeightsCommand add(AddCommand addAny, CLI::App& weights, ProgramOptions& program,
                   const CommandHelp& help, WeightsRun run) {
  const auto options = std::make_shared<WeightsOptions>();
  auto* command =
      addAny(weights, program, help, [options, run](Output& output) { run(*options, output); });
  command->add_option("--directory", options->directory, "where the weights lie")->required();
  return {command, options.get()};
}

void addAddress(const WeightsCommand& command) {
  command.app->add_option("--address", command.options->address, "address of the portal")
      ->required()
      ->check(notEmpty());
}

void addName(const WeightsCommand& command) {
  command.app->add_option("NAME", command.options->name, "name of the file")->required();
}

}  // namespace

void addWeightsCommands(CLI::App& app, ProgramOptions& program) {
  auto* weights = addCommandGroup(
      app, {"weights", "Starting weights: what a portal offers, and what lies here.",
            "weights list --address URL --directory weights/"});
  addAddress(add(addCommand, *weights, program,
                 {"list", "Lists the files and their states.",
                  "weights list --address URL --directory weights/"},
                 runList));
  const auto get = add(addWritingCommand, *weights, program,
                       {"get", "Fetches a file and checks it.",
                        "weights get small.weights --address URL --directory weights/"},
                       runGet);
  addName(get);
  addAddress(get);
  const auto import = add(addWritingCommand, *weights, program,
                          {"import", "Copies a file into the directory.",
                           "weights import ~/small.weights --directory weights/"},
                          runImport);
  import.app->add_option("FILE", import.options->name, "the file")->required();
  addName(add(addWritingCommand, *weights, program,
              {"remove", "Deletes a file of the directory.",
               "weights remove small.weights --directory weights/"},
              runRemove));
}
