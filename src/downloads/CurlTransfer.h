#pragma once

#include <cstddef>
#include <exception>
#include <functional>
#include <string>

namespace tnv {

/// One exchange over the network, on the calling thread. It ends, or fails by the defaults of the
/// network library; there is no time limit of its own.
class CurlTransfer {
 public:
  /// Takes a piece of the body; false ends the transfer.
  using TakePiece = std::function<bool(const char* bytes, std::size_t count)>;

  /// Total and present count of bytes of the body; the total is 0 as long as it is not known.
  using TellProgress = std::function<void(double total, double now)>;

  /// `verifyCertificate` false takes any certificate of a server.
  CurlTransfer(const std::string& address, bool verifyCertificate);
  ~CurlTransfer();
  CurlTransfer(const CurlTransfer&) = delete;
  CurlTransfer& operator=(const CurlTransfer&) = delete;

  void post(const std::string& body);
  void takeBody(TakePiece take);
  void tellProgress(TellProgress tell);

  /// The network library's code, 0 for success. What the two functions throw comes out here.
  int perform();

 private:
  static std::size_t writeBody(char* bytes, std::size_t size, std::size_t count, void* self);
  static int progressed(void* self, long long total, long long now);

  void* handle;

  /// Whether the library keeps to the protocols of portals.
  bool restricted = false;
  bool endless = false;
  TakePiece take;
  TellProgress tell;
  std::exception_ptr failure;
};

}  // namespace tnv
