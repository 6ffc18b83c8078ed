#include <stdexcept>

#include <json/json.h>

#include "downloads/PortalReply.h"
#include "foundation/Files.h"
#include "fuzz/Fuzzing.h"

/// The reply of a portal that is asked for its files.
void fuzz::run(std::string_view input) {
  tnv::printable(input);
  try {
    tnv::filesOfReply(std::string(input));
  } catch (const Json::Exception&) {
  } catch (const std::invalid_argument&) {
  } catch (const std::out_of_range&) {
  }
}
