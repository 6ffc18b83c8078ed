// The hash of a large file, as the comparison with a portal needs it.

#include <array>
#include <fstream>
#include <memory>
#include <vector>

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

/// In pieces of a megabyte.
std::string bareHash(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(),
                                                                        EVP_MD_CTX_free);
  EVP_DigestInit_ex(context.get(), EVP_md5(), nullptr);
  std::vector<char> piece(kMegabyte);
  while (file) {
    file.read(piece.data(), kMegabyte);
    EVP_DigestUpdate(context.get(), piece.data(), static_cast<std::size_t>(file.gcount()));
  }
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned length = 0;
  EVP_DigestFinal_ex(context.get(), digest.data(), &length);
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
  requireSame(TNVDirectory::fileMD5(path) == bareHash(path), "the hashes differ");
  return {{[temp, path] { benchmark::DoNotOptimize(TNVDirectory::fileMD5(path)); }},
          {[path] { benchmark::DoNotOptimize(bareHash(path)); }}};
}

}  // namespace

void addHashes(const Plan& plan) {
  for (const int megabytes : plan.sizes({16, 256}))
    addComparison(plan, {"hash a file, MiB", megabytes, megabytes == 256 ? 1.1 : 0},
                  [megabytes] { return hashOf(megabytes); });
}
