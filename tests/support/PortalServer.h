#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace httplib {
class Server;
struct Request;
struct Response;
}  // namespace httplib

/// A portal on loopback, with or without encryption. Its certificate is signed by itself.
class PortalServer {
 public:
  explicit PortalServer(bool encrypted = false);
  ~PortalServer();

  /// The address of a path on the server.
  std::string address(const std::string& path) const;

  /// The address that the list is asked from.
  std::string listAddress() const { return address("/interface.upload_portal.php"); }

  /// Stops; the address refuses connections from then on.
  void stop();

  /// For a client in a process of its own, whose requests put nothing in order with the test's
  /// calls: sets `reply`, and tells how many requests there were.
  void setReply(const std::string& text);
  std::size_t requestCount() const;

  /// What the server answers to a request for its list.
  std::string reply = "{}";

  /// Of the requests for the list: body and content type.
  std::vector<std::string> bodies;
  std::vector<std::string> contentTypes;

 private:
  void addHandlers();
  void addFiles();

  class Impl;
  std::unique_ptr<Impl> impl;
  mutable std::mutex guard;  ///< of the reply and of what is kept of the requests
};

/// What the server offers at "/file": bytes of every value.
std::string servedContent();

/// The size of what the server offers at "/cut", of which it sends half, at "/slow", which comes in
/// pieces, and at "/endless", which comes without a length.
constexpr std::size_t kServedSize = 1 << 20;
