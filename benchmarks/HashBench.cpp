// The hash of a large file, as the comparison with a portal needs it.

#include <array>
#include <fstream>
#include <memory>

#include <openssl/evp.h>

#include "Compare.h"
#include "foundation/TNVDirectory.h"
#include "support/TempDirectory.h"

namespace {

constexpr int kMegabyte = 1 << 20;

std::string fileOf(const TempDirectory& temp, int megabytes) {
  std::string piece(kMegabyte, ' ');
  const std::string path = temp / "large.bin";
  std::ofstream file(path, std::ios::binary);
  for (int i = 0; i < megabytes; ++i) {
    piece[0] = static_cast<char>(i);
    file.write(piece.data(), kMegabyte);
  }
  return path;
}

std::string readWhole(const std::string& path, std::size_t size) {
  std::string content(size, ' ');
  std::ifstream(path, std::ios::binary).read(content.data(), static_cast<std::streamsize>(size));
  return content;
}

std::string bareHash(const std::string& content) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned length = 0;
  EVP_Digest(content.data(), content.size(), digest.data(), &length, EVP_md5(), nullptr);
  std::string text;
  for (unsigned i = 0; i < length; ++i) {
    constexpr auto kDigits = "0123456789abcdef";
    text += kDigits[digest[i] >> 4];
    text += kDigits[digest[i] & 15];
  }
  return text;
}

Pair hashOf(int megabytes) {
  const auto temp = std::make_shared<TempDirectory>();
  const std::string path = fileOf(*temp, megabytes);
  const std::size_t size = std::size_t{kMegabyte} * static_cast<std::size_t>(megabytes);
  requireSame(TNVDirectory::fileMD5(path) == bareHash(readWhole(path, size)), "the hashes differ");
  return {{[temp, path] { benchmark::DoNotOptimize(TNVDirectory::fileMD5(path)); }},
          {[path, size] { benchmark::DoNotOptimize(bareHash(readWhole(path, size))); }}};
}

}  // namespace

void addHashes(const Plan& plan) {
  for (const int megabytes : plan.sizes({16, 256}))
    addComparison(plan, "hash a file, megabytes", megabytes, 5,
                  [megabytes] { return hashOf(megabytes); });
}
