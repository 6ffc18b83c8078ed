#include "verify/FindingsOutput.h"

#include <map>

namespace {

std::string placeOf(const Finding& finding) {
  return finding.file + (finding.line > 0 ? ":" + std::to_string(finding.line) : "");
}

void writeEach(const Findings& findings, Output& output) {
  Json::Value list(Json::arrayValue);
  for (const auto& [file, line, rule, text] : findings) {
    Json::Value entry;
    entry["file"] = file;
    entry["line"] = static_cast<Json::UInt64>(line);
    entry["rule"] = rule;
    entry["text"] = text;
    list.append(entry);
  }
  output.fact("findings", list);
  for (const auto& finding : findings)
    output.say(placeOf(finding) + ": " + finding.rule + ": " + finding.text);
}

void writeRules(const Findings& findings, Output& output) {
  std::map<std::string, std::size_t> counts;
  for (const auto& finding : findings)
    ++counts[finding.rule];
  std::vector<TableRow> rows;
  for (const auto& [rule, count] : counts)
    rows.push_back({count, rule});
  if (rows.empty()) return;
  output.say();
  output.table("rules", {"findings", "rule"}, rows);
  output.say();
}

}  // namespace

void writeFindings(const Findings& findings, Output& output) {
  writeEach(findings, output);
  writeRules(findings, output);
  if (!findings.empty()) output.setFindings();
}
