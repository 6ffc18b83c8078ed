#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "CommandError.h"
#include "Output.h"
#include "Platform.h"
#include "TNV_SampleBenchNative/WTNVProject.h"

/// Where projects, templates and task trees lie.
struct Locations {
  std::string projects;
  std::string platforms;
  std::string augments;
};

/// The directories that lie beside the program, in the build tree as in an installation.
std::string defaultPlatforms();
std::string defaultAugments();

/// Throws CommandError if there is a project of that name or the name will not do.
void requireNewProject(const Locations& locations, const std::string& name);

/// Makes and saves a new project; throws CommandError like `requireNewProject`, and if it cannot be
/// saved.
std::unique_ptr<WTNVProject> createProject(const Locations& locations, const std::string& name);

/// Throws CommandError if the library's settings files would lose a part of the text. `what` says
/// what it is.
void requireStorable(const std::string& what, const std::string& text);

/// A project whose settings or lists cannot be read, so that nothing is known of its pictures.
class BrokenProject : public CommandError {
  using CommandError::CommandError;
};

/// Loads a project, to read it; throws CommandError, which lists the projects, if there is none of
/// that name, and BrokenProject.
std::unique_ptr<WTNVProject> openProject(const Locations& locations, const std::string& name);

/// Keeps other commands from changing the project as long as it lives: of two that read, change and
/// save it at once, the one that saves first would lose its changes. To be made before the project
/// is opened; throws CommandError if another command has it. A dry run keeps nobody out.
class ProjectLock {
 public:
  ProjectLock(const Locations& locations, const std::string& name, const Output& output);

 private:
  std::unique_ptr<platform::DirectoryLock> lock;
};

/// The same, to change it. Also throws CommandError if the project was moved or copied and not told
/// so: the records that would be changed are those of another project, or nowhere; and if it lost
/// the list of a set, whose records would go unseen.
std::unique_ptr<WTNVProject> openProject(const Locations& locations, const std::string& name,
                                         const ProjectLock& lock);

/// Throws CommandError for such a project.
void requireOwnRecords(const WTNVProject& project);

/// What to do about a project that looks for records outside its own directory, as one that was
/// moved or copied does; empty if it does not.
std::string moveAdvice(const WTNVProject& project);

/// Saves all (`full`), or only pictures with changed marks; throws CommandError if that fails. In a
/// dry run nothing is saved.
void saveProject(WTNVProject& project, bool full, const Output& output);

/// Whether the project's settings, and labels of every format, give that name of a class back: the
/// settings' list of names is cut at commas, for one.
bool isClassName(const std::string& name);

/// Throws CommandError unless it is one.
void requireClassName(const std::string& name);

/// One picture of a project, with its data in memory.
struct PictureRecord {
  std::string set;
  std::string path;
  WTNVTrainSet trainSet;
  /// Why the record cannot be read, and where it is; empty if it can.
  std::string damage;
  /// Its file is not there, so that nothing more can be lost.
  bool isGone = false;
  /// It is looked for outside the directory of the project.
  bool isElsewhere = false;
};

/// All pictures of the project, in the order in which the library counts them. Those whose record
/// cannot be read keep an empty path.
std::vector<PictureRecord> readRecords(const WTNVProject& project);

/// The same, and those that cannot be read are noted; so is a project that was moved or copied, or
/// lost the list of a set.
std::vector<PictureRecord> readPictures(const WTNVProject& project, Output& output);

/// The first record that is damaged or empty; null if there is none. One that is missing is none:
/// nothing is lost with it any more.
const PictureRecord* firstDamaged(const std::vector<PictureRecord>& records);

/// Throws CommandError, which names the file, if a record is damaged or empty.
void requireWholeRecords(const WTNVProject& project);

/// The directory that holds the project's own files.
std::filesystem::path projectDirectory(const WTNVProject& project);

/// Whether the path, links followed, is the directory or lies below it.
bool liesWithin(const std::filesystem::path& path, const std::filesystem::path& directory);

/// The text as one word of a command line.
std::string forShell(const std::string& text);

/// The path from the root, without detours.
std::string absolutePath(const std::string& path);

/// The place itself, or the lowest directory above it that is there: what is made at the place
/// begins there.
std::filesystem::path lowestExisting(const std::string& place);

/// Finds pictures of a project by path or by file name.
class PictureIndex {
 public:
  /// Finds them in one set only, if it is given; throws CommandError if there is no such set.
  PictureIndex(const std::vector<PictureRecord>& pictures, Output& output,
               const std::string& set = "");

  /// Place of the picture in the list; of one that is in several sets the first, which is noted. A
  /// file name will do if it is the only one; throws
  /// CommandError, with the candidates, if it is not, and if there is no such picture, with the
  /// records that cannot be read, for it may be in one of them.
  std::size_t find(const std::string& name) const;

  /// The same, for what cannot be undone: throws CommandError for one that is in several sets. Of
  /// one that is twice in a set it is the first, which is noted.
  std::size_t findOnly(const std::string& name) const;

 private:
  std::vector<std::size_t> foundPlaces(const std::string& name) const;
  std::vector<std::size_t> placesOf(const std::string& name) const;
  std::string candidates(const std::vector<std::size_t>& places) const;
  std::string missing(const std::string& name) const;

  std::vector<PictureRecord> records;
  Output& messages;
  mutable std::unordered_set<std::size_t> noted;
  std::unordered_map<std::string, std::vector<std::size_t>> byPath;
  std::unordered_map<std::string, std::vector<std::size_t>> byFileName;
};

/// Throws CommandError, which lists the choices, if the value is none of them. `what` says what is
/// chosen; the exit code is that of wrong usage where the choices are always the same.
void requireChoice(const std::string& what, const std::string& value,
                   const std::vector<std::string>& choices, ExitCode code = exitFailed);

/// The class of that name; throws CommandError, which lists the classes, if there is none.
WTNVDNNClass findClass(const WTNVProject& project, const std::string& name);
