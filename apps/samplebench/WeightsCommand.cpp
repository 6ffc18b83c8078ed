#include "WeightsCommand.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <random>
#include <stdexcept>

#include "CommandError.h"
#include "CommandLine.h"
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
  const auto here = sizeOf(transfer.replaces ? transfer.part : transfer.whole);
  transfer.progress->moveTo(std::min(here, transfer.size));
}

std::string directoryOf(const WeightsOptions& options) {
  if (!fs::is_directory(options.directory))
    throw CommandError("'" + options.directory + "' is no directory; make it first");
  return (fs::path(options.directory) / "").generic_string();
}

std::string stateOf(const WTNVDownloadFile& file) {
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

void fetch(Downloads& downloads, const WTNVDownloadFile& file, const std::string& directory,
           Output& output) {
  const auto link = file.wGetDownloadAddress();
  requireLink(file.wGetFileName(), link);
  requireFreePlace(directory + file.wGetFileName());
  const auto size = static_cast<std::size_t>(std::max(file.wGetFileSize(), 0));
  Progress progress(size, output);
  const fs::path target = fs::path(directory) / file.wGetFileName();
  transfer = {&progress, target.string() + ".part", target, size, fs::exists(target)};
  downloads.handler.setCBDownloadUpdate(onUpdate);
  const bool fetched = downloads.handler.wDownloadFile(file, directory);
  progress.finish();
  downloads.handler.setCBDownloadUpdate(nullptr);
  if (!fetched)
    throw CommandError("'" + file.wGetFileName() + "' could not be fetched from '" + link + "'; " +
                       whatToDo(link, directory));
}

void runList(const WeightsOptions& options, Output& output) {
  Downloads downloads;
  const auto files = filesOf(downloads, options.address, directoryOf(options));
  if (std::none_of(files.begin(), files.end(), isOffered))
    output.note("the portal cannot be reached or offers nothing");
  std::vector<TableRow> rows{{"file", "bytes", "date", "state"}};
  for (const auto& file : files)
    rows.push_back({file.wGetFileName(), std::to_string(file.wGetFileSize()), file.wGetTimeStamp(),
                    stateOf(file)});
  writeTable(output.data(), rows);
}

void runGet(const WeightsOptions& options, Output& output) {
  Downloads downloads;
  const auto directory = directoryOf(options);
  const auto wanted = offeredFile(downloads, options, directory);
  if (wanted.wGetStateMD5Valid()) {
    output.data() << directory << options.name << " is there already and whole\n";
    return;
  }
  fetch(downloads, wanted, directory, output);
  const auto file = offeredFile(downloads, options, directory);
  if (!file.wGetStateMD5Valid())
    throw CommandError("'" + options.name + "' came, but is " + stateOf(file) +
                       "; fetch it again, or ask those who run the portal");
  output.data() << "fetched " << directory << options.name << " (" << file.wGetFileSize()
                << " bytes, whole)\n";
}

void runImport(const WeightsOptions& options, Output& output) {
  Downloads downloads;
  const auto directory = directoryOf(options);
  const auto name = fs::path(options.name).filename().string();
  if (!fs::is_regular_file(options.name)) throw CommandError("'" + options.name + "' is no file");
  if (fs::exists(directory + name))
    throw CommandError("'" + directory + name + "' is there already; remove it first");
  if (!downloads.handler.wImportFile(options.name, directory))
    throw CommandError("'" + options.name + "' could not be copied to '" + directory + "'");
  output.data() << "imported " << directory << name << '\n';
}

void runRemove(const WeightsOptions& options, Output& output) {
  Downloads downloads;
  const auto directory = directoryOf(options);
  const OneFile one(directory, options.name);
  for (const auto& file : downloads.handler.wGetAllFiles("", one.directory())) {
    if (file.wGetFileName() != options.name) continue;
    if (!downloads.handler.wRemoveFile(file, directory))
      throw CommandError("'" + directory + options.name + "' could not be removed");
    output.data() << "removed " << directory << options.name << '\n';
    return;
  }
  throw CommandError("there is no '" + options.name + "' in '" + directory + "'");
}

using WeightsRun = void (*)(const WeightsOptions&, Output&);

struct WeightsCommand {
  CLI::App* app;
  WeightsOptions* options;
};

WeightsCommand add(CLI::App& weights, ProgramOptions& program, const CommandHelp& help,
                   WeightsRun run) {
  const auto options = std::make_shared<WeightsOptions>();
  auto* command =
      addCommand(weights, program, help, [options, run](Output& output) { run(*options, output); });
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
  addAddress(add(*weights, program,
                 {"list", "Lists the files and their states.",
                  "weights list --address URL --directory weights/"},
                 runList));
  const auto get = add(*weights, program,
                       {"get", "Fetches a file and checks it.",
                        "weights get small.weights --address URL --directory weights/"},
                       runGet);
  addName(get);
  addAddress(get);
  const auto import = add(*weights, program,
                          {"import", "Copies a file into the directory.",
                           "weights import ~/small.weights --directory weights/"},
                          runImport);
  import.app->add_option("FILE", import.options->name, "the file")->required();
  addName(add(*weights, program,
              {"remove", "Deletes a file of the directory.",
               "weights remove small.weights --directory weights/"},
              runRemove));
}
