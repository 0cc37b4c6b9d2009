#include "web/Admission.h"

#include <sys/random.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace VELTRO::KELVO::VirtualCard {

namespace {

// Whatever the locale.
std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

bool IsJson(std::string_view type) {
  const std::string lower = Lower(type);
  return lower == "application/json" || lower == "application/json; charset=utf-8" ||
         lower == "application/json;charset=utf-8";
}

}  // namespace

Admission::Admission(std::vector<std::string> hosts, std::string token)
    : hosts_([&] {
        for (std::string& host : hosts) host = Lower(host);
        return std::move(hosts);
      }()),
      token_(std::move(token)) {}

// In a time that tells nothing of where they differ.
bool Admission::IsToken(std::string_view text) const {
  if (text.size() != token_.size()) return false;
  unsigned difference = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    difference |= static_cast<unsigned>(static_cast<unsigned char>(text[i] ^ token_[i]));
  }
  return difference == 0;
}

std::optional<WebAnswer> Admission::Refuse(const WebRequest& request) const {
  const auto refusal = [](unsigned status, const char* text) {
    return WebAnswer{.Status = status, .Body = std::string(text) + "\n"};
  };
  const std::string host = Lower(request.Host);
  if (request.HostCount != 1) return refusal(400, "One Host is needed.");
  // A foreign name that was made to lead here is no name of this card.
  if (std::ranges::find(hosts_, host) == hosts_.end()) return refusal(421, "This card has another name.");
  if (!request.Origin.empty() && Lower(request.Origin) != "http://" + host) {
    return refusal(403, "Another page asks.");
  }
  // Browsers say so also where they send no Origin. To follow a link to the page is nobody's harm.
  const bool isForeign = request.FetchSite == "cross-site" || request.FetchSite == "same-site";
  if (isForeign && request.Path != "/") return refusal(403, "Another page asks.");
  const bool isChange = request.Path == "/do";
  if (isChange != (request.Method == "POST") ||
      (!isChange && request.Method != "GET" && request.Method != "HEAD")) {
    return refusal(405, "Not by this method.");
  }
  if (!isChange) return std::nullopt;
  if (!IsJson(request.ContentType)) return refusal(415, "It takes application/json.");
  if (!IsToken(request.Token)) return refusal(403, "The page's token is needed.");
  return std::nullopt;
}

std::string RandomText(std::size_t bytes) {
  constexpr std::string_view Digits = "0123456789abcdef";
  std::string text;
  while (text.size() < 2 * bytes) {
    unsigned char byte = 0;
    if (getrandom(&byte, 1, 0) == 1) {
      (text += Digits[byte >> 4]) += Digits[byte & 15];
    } else if (errno != EINTR) {
      throw std::system_error(errno, std::generic_category(), "getrandom");
    }
  }
  return text;
}

}  // namespace VELTRO::KELVO::VirtualCard
