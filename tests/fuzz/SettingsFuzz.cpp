#include "foundation/TNVSettings.h"
#include "fuzz/Fuzzing.h"

/// A settings file: all ways to ask for a value, and saving what was loaded.
void fuzz::run(std::string_view input) {
  const auto path = place().write("settings.cfg", std::string(input));
  TNVSettings settings(path);
  require(settings.loadFile(), "a file that is there is read");
  for (const std::string key : {"a", "Project.Name", "DNNClass.Idx", "list"}) {
    settings.getString(key, "none");
    settings.getBool(key, false);
    mayThrow([&] { settings.getInt(key, 1); });
    mayThrow([&] { settings.getIntList(key, {1}); });
    mayThrow([&] { settings.getFloatList(key, {1.0F}); });
    settings.getStringList(key, {"none"});
    settings.getStringMap(key, {{"none", "none"}});
  }
  require(settings.saveFile(), "settings are written");
  // Not always with the same values: nothing escapes in these files.
  require(settings.loadFile() && settings.saveFile(), "settings are read and written again");
}
