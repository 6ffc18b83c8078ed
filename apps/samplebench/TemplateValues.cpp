#include "TemplateValues.h"

#include <set>

#include "CommandError.h"
#include "Numbers.h"
#include "Output.h"
#include "ProjectAccess.h"

namespace {

void requireUsable(const std::string& key, const std::string& value, ExitCode code) {
  // A value that holds a keyword would be filled in without end.
  if (value.find("###") != std::string::npos || value.find('\n') != std::string::npos)
    throw CommandError("the value of " + key + " must not hold ### or a line break", code);
}

// A trainer would read such a value as zero, or stop.
void requireNumber(const std::string& key, const std::string& value, const std::string& usual) {
  if (parseNumber(usual) && !parseNumber(value))
    throw CommandError("the value of " + key + " must be a number, like " + usual + ", and is '" +
                       value + "'");
}

TemplateValues valuesOf(const TemplateValues& defaults, const TemplateValues& settings,
                        const TemplateValues& own, std::set<std::string>& missing) {
  TemplateValues values;
  for (const auto& [key, value] : defaults) {
    if (const auto set = settings.find(key); set != settings.end()) {
      requireNumber(key, set->second, value);
      values.insert(*set);
    } else if (const auto known = own.find(key); known != own.end()) {
      values.insert(*known);
    } else if (value.empty()) {
      missing.insert(key);
    }
  }
  return values;
}

void requireKnownKeys(const TemplateValues& settings, const std::set<std::string>& keys) {
  for (const auto& setting : settings)
    requireChoice("key", setting.first, {keys.begin(), keys.end()});
}

}  // namespace

TemplateValues parseSettings(const std::vector<std::string>& settings) {
  TemplateValues values;
  for (const auto& setting : settings) {
    const auto equals = setting.find('=');
    if (equals == std::string::npos || equals == 0)
      throw CommandError("'" + setting + "' is no setting; write it as KEY=VALUE", exitUsage);
    const auto key = setting.substr(0, equals);
    values[key] = setting.substr(equals + 1);
    requireUsable(key, values[key], exitUsage);
  }
  return values;
}

std::vector<TemplateValues> valuesFor(const WTNVGeneration& generation,
                                      const std::vector<TemplateChoice>& templates,
                                      const TemplateValues& settings, const TemplateValues& own) {
  for (const auto& [key, value] : own)
    requireUsable(key, value, exitFailed);
  std::vector<TemplateValues> result;
  std::set<std::string> keys;
  std::set<std::string> missing;
  for (const auto& [descriptor, name] : templates) {
    const auto defaults = generation.wGetTemplateDataDefault(descriptor, name);
    for (const auto& entry : defaults)
      keys.insert(entry.first);
    result.push_back(valuesOf(defaults, settings, own, missing));
  }
  requireKnownKeys(settings, keys);
  if (!missing.empty())
    throw CommandError("the templates want values for " + joined({missing.begin(), missing.end()}) +
                       "; give them with --set KEY=VALUE");
  return result;
}
