#include "fuzz/Fuzzing.h"
#include "generation/TNVKeyWordAndValue.h"

/// A template, filled with its own defaults and with a value for each key.
void fuzz::run(std::string_view input) {
  TNVKeyWordAndValue filling;
  filling.sourceFile = place().write("template.tmp", std::string(input));
  filling.targetFile = place() / "filled.cfg";
  filling.getAvailableKeys();
  require(filling.keys.size() == filling.values.size() &&
              filling.keys.size() == filling.keywords.size(),
          "each key has a value and a keyword");
  filling.replace();
  for (const auto& key : filling.keys)
    require(filling.setValueForKey(key, "7"), "a key that is there takes a value");
  filling.replace();
}
