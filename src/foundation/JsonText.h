#pragma once

#include <string>
#include <string_view>

#include <json/json.h>

namespace tnv {

/// Parses with the reader whatever the global locale is: by itself it reads fractions as that one
/// writes them, so that under one with decimal commas a point makes a text no JSON. Returns and
/// throws what the reader does; `errors`, unless it is null, is told lines of the text, but columns
/// may be off.
bool parseJson(Json::CharReader& reader, std::string_view text, Json::Value& root,
               std::string* errors);

}  // namespace tnv
