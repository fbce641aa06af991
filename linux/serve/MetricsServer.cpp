#include "linux/serve/MetricsServer.h"

#include <fmt/format.h>

#include <array>
#include <limits>

#include "linux/process/Limits.h"
#include "linux/serve/LoopbackListener.h"

namespace Linux {

namespace {

constexpr char const* kMetrics = "text/plain; version=0.0.4; charset=utf-8";
constexpr char const* kWords = "text/plain; charset=utf-8";

std::string answerOf(char const* status, char const* type, std::string const& body, bool isHead) {
  std::string const head = fmt::format(
      "HTTP/1.0 {}\r\nContent-Type: {}\r\nContent-Length: {}\r\nConnection: close\r\n\r\n", status,
      type, body.size());
  return isHead ? head : head + body;
}

/// Takes the word in front of the next blank, and the blank.
std::string_view word(std::string_view& line) {
  std::string_view const found = line.substr(0, line.find(' '));
  line.remove_prefix(std::min(found.size() + 1, line.size()));
  return found;
}

/// One request, and its answer.
class Request final : public Conversation {
 public:
  explicit Request(std::function<std::string()> const& text) : text_(text) {}

  std::span<uint8_t> room() override { return part_; }
  Verdict take(size_t octets, Answer const& answer) override {
    request_.append(part_.begin(), part_.begin() + octets);
    if (request_.find("\r\n\r\n") != std::string::npos) {
      answer(answerToRequest());
    } else if (request_.size() > Limits::kMetricsRequest) {
      answer(answerOf("431 Request Header Fields Too Large", kWords, "", false));
    } else {
      return Verdict::goesOn;
    }
    return Verdict::ends;
  }
  Verdict inputEnds(Answer const&) override { return Verdict::ends; }

 private:
  std::string answerToRequest() const {
    std::string_view line = std::string_view(request_).substr(0, request_.find("\r\n"));
    std::string_view const method = word(line);
    std::string_view const path = word(line);
    if (!line.starts_with("HTTP/1.")) return answerOf("400 Bad Request", kWords, "", false);
    bool const isHead = method == "HEAD";
    if (!isHead && method != "GET") return answerOf("405 Method Not Allowed", kWords, "", false);
    if (path != "/metrics") return answerOf("404 Not Found", kWords, "see /metrics\n", isHead);
    return answerOf("200 OK", kMetrics, text_(), isHead);
  }

  std::function<std::string()> const& text_;
  std::array<uint8_t, 4096> part_{};
  std::string request_;
};

}  // namespace

// An answer of any length waits for its reader, who gives way to others.
MetricsServer::MetricsServer(EventLoop& loop, std::function<std::string()> text)
    : text_(std::move(text)),
      server_(loop, *this,
              {.maxClients = Limits::kMetricsClients,
               .maxUnread = std::numeric_limits<size_t>::max(),
               .areAllIdle = true}) {}

Macsecd::Result<> MetricsServer::listenAt(std::string const& address) {
  return server_.serve(listenAtLoopback(address));
}

uint16_t MetricsServer::port() const {
  return server_.listener() ? portOf(server_.listener()->fd()) : uint16_t{0};
}

std::unique_ptr<Conversation> MetricsServer::begin(SocketPeer const&) {
  return std::make_unique<Request>(text_);
}

}  // namespace Linux
