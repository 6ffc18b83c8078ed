#include "downloads/CurlTransfer.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <utility>

#include <curl/curl.h>

namespace tnv {

namespace {

/// Anything else that the library speaks could reach what no portal has to do with.
constexpr auto kProtocols = "http,https,file";

struct PartsCloser {
  void operator()(CURLU* parts) const { curl_url_cleanup(parts); }
};

/// A part of an address, decoded; nothing if it has none, or one that cannot be told.
std::optional<std::string> partOf(CURLU* parts, CURLUPart which) {
  char* text = nullptr;
  if (curl_url_get(parts, which, &text, CURLU_URLDECODE) != CURLUE_OK) return std::nullopt;
  std::string part(text);
  curl_free(text);
  return part;
}

/// Whether the address leads to a pipe or a device here, from which reading might never end.
bool isEndless(const std::string& address) {
  const std::unique_ptr<CURLU, PartsCloser> parts(curl_url());
  if (curl_url_set(parts.get(), CURLUPART_URL, address.c_str(), 0) != CURLUE_OK) return false;
  if (partOf(parts.get(), CURLUPART_SCHEME) != "file") return false;
  // Control characters in a path are not told, but followed.
  const auto path = partOf(parts.get(), CURLUPART_PATH);
  std::error_code error;
  return !path || std::filesystem::is_other(*path, error);
}

}  // namespace

CurlTransfer::CurlTransfer(const std::string& address, bool verifyCertificate)
    : handle(curl_easy_init()) {
  if (handle == nullptr) return;
  curl_easy_setopt(handle, CURLOPT_URL, address.c_str());
  endless = isEndless(address);
  curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, verifyCertificate ? 1L : 0L);
  // Without a word about a proxy the library takes one from variables of the environment, which may
  // be somebody else's.
  curl_easy_setopt(handle, CURLOPT_PROXY, "");
  restricted = curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, kProtocols) == CURLE_OK;
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, writeBody);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, this);
}

CurlTransfer::~CurlTransfer() {
  curl_easy_cleanup(handle);
}

void CurlTransfer::post(const std::string& body) {
  if (handle != nullptr) curl_easy_setopt(handle, CURLOPT_COPYPOSTFIELDS, body.c_str());
}

void CurlTransfer::takeBody(TakePiece newTake) {
  take = std::move(newTake);
}

void CurlTransfer::tellProgress(TellProgress newTell) {
  tell = std::move(newTell);
  if (handle == nullptr) return;
  static_assert(sizeof(curl_off_t) == sizeof(long long));
  const curl_xferinfo_callback callback = [](void* self, curl_off_t total, curl_off_t now,
                                             curl_off_t,
                                             curl_off_t) { return progressed(self, total, now); };
  curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, callback);
  curl_easy_setopt(handle, CURLOPT_XFERINFODATA, this);
}

int CurlTransfer::perform() {
  if (handle == nullptr) return CURLE_FAILED_INIT;
  if (!restricted) return CURLE_UNSUPPORTED_PROTOCOL;
  if (endless) return CURLE_FILE_COULDNT_READ_FILE;
  const CURLcode code = curl_easy_perform(handle);
  if (failure) std::rethrow_exception(failure);
  return code;
}

// Exceptions must not pass through the library, which is written in C.

std::size_t CurlTransfer::writeBody(char* bytes, std::size_t size, std::size_t count, void* self) {
  auto& transfer = *static_cast<CurlTransfer*>(self);
  const std::size_t length = size * count;
  try {
    if (transfer.take(bytes, length)) return length;
  } catch (...) {
    transfer.failure = std::current_exception();
  }
  // No piece has this length, which ends the transfer.
  return static_cast<std::size_t>(-1);
}

int CurlTransfer::progressed(void* self, long long total, long long now) {
  auto& transfer = *static_cast<CurlTransfer*>(self);
  try {
    transfer.tell(static_cast<double>(total), static_cast<double>(now));
    return 0;
  } catch (...) {
    transfer.failure = std::current_exception();
  }
  return 1;
}

}  // namespace tnv
