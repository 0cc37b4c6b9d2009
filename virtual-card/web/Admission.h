// Which requests are let in. A page on loopback is in reach of every page that the same browser shows, so that each
// request has to prove where it comes from.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace VELTRO::KELVO::VirtualCard {

// A header that did not come is empty.
struct WebRequest {
  std::string Method, Path;
  std::string Host, Origin, FetchSite, ContentType, Token, LastEventId;
  std::size_t HostCount = 0;
  std::string ListId, From, After;  // arguments of the address
  std::string Body;
};

struct WebAnswer {
  unsigned Status = 200;
  std::string ContentType = "text/plain; charset=utf-8";
  std::string Body = {};
};

class Admission {
 public:
  static constexpr std::size_t MostBodyBytes = 4096;

  // `hosts` are the values of Host that are let in; changes need the `token`.
  Admission(std::vector<std::string> hosts, std::string token);

  const std::string& GetToken() const { return token_; }
  // The refusal of a request whose head has come, or nothing. The body is not looked at.
  std::optional<WebAnswer> Refuse(const WebRequest& request) const;

 private:
  bool IsToken(std::string_view text) const;

  const std::vector<std::string> hosts_;
  const std::string token_;
};

// Random, in hexadecimal digits. Throws std::system_error.
std::string RandomText(std::size_t bytes);

}  // namespace VELTRO::KELVO::VirtualCard
