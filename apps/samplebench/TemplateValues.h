#pragma once

#include <map>
#include <string>
#include <vector>

#include "TNV_SampleBenchNative/WTNVGeneration.h"

using TemplateValues = std::map<std::string, std::string>;

/// The keys and values of texts KEY=VALUE; throws CommandError for a text without an equals sign
/// or a value that cannot stand in a template.
TemplateValues parseSettings(const std::vector<std::string>& settings);

/// A template that was chosen.
struct TemplateChoice {
  std::string descriptor;
  std::string name;
};

/// The values to fill each template with: those of `settings` before those of `own`, and what has a
/// default in the template is left to it. Throws CommandError if a key of `settings` stands in none
/// of the templates, or a key is left without a value.
std::vector<TemplateValues> valuesFor(const WTNVGeneration& generation,
                                      const std::vector<TemplateChoice>& templates,
                                      const TemplateValues& settings, const TemplateValues& own);
