#include "WeightsCommand.h"

#include <algorithm>
#include <filesystem>

#include "CommandError.h"
#include "Progress.h"
#include "TNV_SampleBenchNative/WTNVProject.h"

namespace fs = std::filesystem;

namespace {

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

std::vector<WTNVDownloadFile> filesOf(Downloads& downloads, const WeightsOptions& options) {
  try {
    return downloads.handler.wGetAllFiles(options.address, directoryOf(options));
  } catch (const CommandError&) {
    throw;
  } catch (const std::exception& error) {
    throw CommandError("the reply of '" + options.address + "' is no list of files (" +
                       error.what() + "); see that the address is that of the portal");
  }
}

bool isOffered(const WTNVDownloadFile& file) {
  return file.wGetStateDownloadable();
}

WTNVDownloadFile fileNamed(const std::vector<WTNVDownloadFile>& files, const std::string& name) {
  std::vector<std::string> offered;
  for (const auto& file : files) {
    if (!isOffered(file)) continue;
    if (file.wGetFileName() == name) return file;
    offered.push_back(file.wGetFileName());
  }
  if (offered.empty())
    throw CommandError("the portal cannot be reached or offers nothing; check the address");
  throw CommandError("the portal has no file '" + name + "'; choose from: " + joined(offered));
}

void fetch(Downloads& downloads, const WTNVDownloadFile& file, const std::string& directory,
           Output& output) {
  const auto size = static_cast<std::size_t>(std::max(file.wGetFileSize(), 0));
  Progress progress(size, output);
  const fs::path target = fs::path(directory) / file.wGetFileName();
  transfer = {&progress, target.string() + ".part", target, size, fs::exists(target)};
  downloads.handler.setCBDownloadUpdate(onUpdate);
  const bool fetched = downloads.handler.wDownloadFile(file, directory);
  progress.finish();
  downloads.handler.setCBDownloadUpdate(nullptr);
  if (!fetched)
    throw CommandError("'" + file.wGetFileName() + "' could not be fetched from '" +
                       file.wGetDownloadAddress() + "'; try again later");
}

}  // namespace

void runWeightsList(const WeightsOptions& options, Output& output) {
  Downloads downloads;
  const auto files = filesOf(downloads, options);
  if (std::none_of(files.begin(), files.end(), isOffered))
    output.note("the portal cannot be reached or offers nothing");
  std::vector<TableRow> rows{{"file", "bytes", "date", "state"}};
  for (const auto& file : files)
    rows.push_back({file.wGetFileName(), std::to_string(file.wGetFileSize()), file.wGetTimeStamp(),
                    stateOf(file)});
  writeTable(output.data(), rows);
}

void runWeightsGet(const WeightsOptions& options, Output& output) {
  Downloads downloads;
  const auto directory = directoryOf(options);
  fetch(downloads, fileNamed(filesOf(downloads, options), options.name), directory, output);
  const auto file = fileNamed(filesOf(downloads, options), options.name);
  if (!file.wGetStateMD5Valid())
    throw CommandError("'" + options.name + "' came, but is " + stateOf(file) +
                       "; fetch it again, or ask those who run the portal");
  output.data() << "fetched " << directory << options.name << " (" << file.wGetFileSize()
                << " bytes, whole)\n";
}

void runWeightsImport(const WeightsOptions& options, Output& output) {
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

void runWeightsRemove(const WeightsOptions& options, Output& output) {
  Downloads downloads;
  const auto directory = directoryOf(options);
  for (const auto& file : downloads.handler.wGetAllFiles("", directory)) {
    if (file.wGetFileName() != options.name) continue;
    if (!downloads.handler.wRemoveFile(file, directory))
      throw CommandError("'" + directory + options.name + "' could not be removed");
    output.data() << "removed " << directory << options.name << '\n';
    return;
  }
  throw CommandError("there is no '" + options.name + "' in '" + directory + "'");
}
