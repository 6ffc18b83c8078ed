#include "support/PortalServer.h"

#include <chrono>
#include <thread>

#include <httplib.h>
#include <openssl/evp.h>
#include <openssl/x509.h>

namespace {

using httplib::DataSink;
using httplib::Request;
using httplib::Response;

struct FreeKey {
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};
struct FreeCertificate {
  void operator()(X509* certificate) const { X509_free(certificate); }
};
using Key = std::unique_ptr<EVP_PKEY, FreeKey>;
using Certificate = std::unique_ptr<X509, FreeCertificate>;

Certificate selfSigned(EVP_PKEY* key) {
  Certificate certificate(X509_new());
  X509_set_version(certificate.get(), 2);
  ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 1);
  X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -3600);
  X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 3600);
  X509_set_pubkey(certificate.get(), key);
  X509_NAME* name = X509_get_subject_name(certificate.get());
  const auto* host = reinterpret_cast<const unsigned char*>("localhost");
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, host, -1, -1, 0);
  X509_set_issuer_name(certificate.get(), name);
  X509_sign(certificate.get(), key, EVP_sha256());
  return certificate;
}

constexpr std::size_t kPiece = 1 << 16;

}  // namespace

class PortalServer::Impl {
 public:
  explicit Impl(bool isEncrypted) : encrypted(isEncrypted) {
    if (encrypted) {
      key.reset(EVP_RSA_gen(2048));
      certificate = selfSigned(key.get());
      server = std::make_unique<httplib::SSLServer>(certificate.get(), key.get());
    } else {
      server = std::make_unique<httplib::Server>();
    }
    port = server->bind_to_any_port("127.0.0.1");
  }

  void start() {
    thread = std::thread([this] { server->listen_after_bind(); });
    while (!server->is_running())
      std::this_thread::yield();
  }

  void stop() {
    server->stop();
    if (thread.joinable()) thread.join();
  }

  bool encrypted;
  Key key;
  Certificate certificate;
  std::unique_ptr<httplib::Server> server;
  int port = 0;
  std::thread thread;
};

std::string servedContent() {
  std::string content;
  for (int i = 0; i < 70000; ++i)
    content += static_cast<char>(i * 7 % 256);
  return content;
}

PortalServer::PortalServer(bool encrypted) : impl(std::make_unique<Impl>(encrypted)) {
  addHandlers();
  addFiles();
  impl->start();
}

PortalServer::~PortalServer() {
  stop();
}

void PortalServer::stop() {
  impl->stop();
}

void PortalServer::setReply(const std::string& text) {
  const std::lock_guard lock(guard);
  reply = text;
}

std::size_t PortalServer::requestCount() const {
  const std::lock_guard lock(guard);
  return bodies.size();
}

std::string PortalServer::address(const std::string& path) const {
  return std::string(impl->encrypted ? "https" : "http") +
         "://localhost:" + std::to_string(impl->port) + path;
}

void PortalServer::addHandlers() {
  impl->server->Post("/interface.upload_portal.php",
                     [this](const Request& request, Response& response) {
                       const std::lock_guard lock(guard);
                       bodies.push_back(request.body);
                       contentTypes.push_back(request.get_header_value("Content-Type"));
                       response.set_content(reply, "application/json");
                     });
}

void PortalServer::addFiles() {
  httplib::Server& server = *impl->server;
  server.Get("/file", [](const Request&, Response& response) {
    response.set_content(servedContent(), "application/octet-stream");
  });
  server.Get("/empty", [](const Request&, Response& response) {
    response.set_content("", "application/octet-stream");
  });
  server.Get("/elsewhere",
             [](const Request&, Response& response) { response.set_redirect("/file"); });
  const std::string piece(kPiece, 'x');
  server.Get("/cut", [piece](const Request&, Response& response) {
    response.set_content_provider(kServedSize, "application/octet-stream",
                                  [piece](std::size_t offset, std::size_t, DataSink& sink) {
                                    return offset < kServedSize / 2 &&
                                           sink.write(piece.data(), piece.size());
                                  });
  });
  server.Get("/slow", [piece](const Request&, Response& response) {
    response.set_content_provider(kServedSize, "application/octet-stream",
                                  [piece](std::size_t, std::size_t, DataSink& sink) {
                                    std::this_thread::sleep_for(std::chrono::milliseconds(20));
                                    return sink.write(piece.data(), piece.size());
                                  });
  });
  server.Get("/endless", [piece](const Request&, Response& response) {
    response.set_chunked_content_provider("application/octet-stream",
                                          [piece](std::size_t offset, DataSink& sink) {
                                            if (offset < kServedSize)
                                              return sink.write(piece.data(), piece.size());
                                            sink.done();
                                            return true;
                                          });
  });
}
