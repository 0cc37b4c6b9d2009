#include "web/Site.h"

#include <algorithm>
#include <charconv>
#include <exception>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "web/Actions.h"
#include "web/CardView.h"
#include "web/PageFiles.h"

namespace VELTRO::KELVO::VirtualCard {

namespace {

constexpr const char* JsonType = "application/json";

template <class Number>
std::optional<Number> NumberOf(std::string_view text) {
  Number number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

WebAnswer Refusal(unsigned status, std::string_view text) {
  return {.Status = status, .Body = std::string(text) + "\n"};
}

}  // namespace

Site::Site(Card& card, Admission admission)
    : card_(card),
      admission_(std::move(admission)),
      epoch_(RandomText(4)),
      events_(epoch_),
      told_(ViewSections().size()) {}

void Site::Look(bool all) {
  const auto sections = ViewSections();
  for (std::size_t i = 0; i < sections.size(); ++i) {
    if (!all && !sections[i].IsQuick) continue;
    std::string now = sections[i].Look(card_);
    if (now == told_[i]) continue;
    events_.Add(sections[i].Name, now);
    told_[i] = std::move(now);
  }
}

WebAnswer Site::Serve(const WebRequest& request) {
  if (request.Path == "/state") return ServeState();
  if (request.Path == "/drawing") return ServeDrawing(request);
  if (request.Path == "/list") return ServeList(request);
  if (request.Path != "/do") return ServeFile(request);
  try {
    Act(card_, request.Body);
    return {.ContentType = JsonType, .Body = "{}"};
  } catch (const std::exception& error) {
    return Refusal(400, error.what());
  }
}

WebAnswer Site::ServeFile(const WebRequest& request) const {
  const auto files = PageFiles();
  const auto found = std::ranges::find(files, request.Path, &PageFile::Path);
  if (found == files.end()) return Refusal(404, "There is no such page.");
  WebAnswer answer{.ContentType = std::string(found->ContentType), .Body = std::string(found->Content)};
  constexpr std::string_view Place = "@TOKEN@";
  const std::size_t token = answer.Body.find(Place);
  if (token != std::string::npos) answer.Body.replace(token, Place.size(), admission_.GetToken());
  return answer;
}

WebAnswer Site::ServeState() {
  Look(true);
  const nlohmann::json head = {{"epoch", epoch_},
                               {"latest", events_.GetLatestId()},
                               {"beam", card_.Execution.GetBeam()},
                               {"serial", card_.Identity.SerialNumber},
                               {"firmware", card_.Identity.FirmwareVersion}};
  std::string body = head.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  body.pop_back();
  const auto sections = ViewSections();
  for (std::size_t i = 0; i < sections.size(); ++i) {
    body.append(",\"").append(sections[i].Name).append("\":").append(told_[i]);
  }
  return {.ContentType = JsonType, .Body = body + "}"};
}

WebAnswer Site::ServeDrawing(const WebRequest& request) const {
  const auto from = NumberOf<std::uint32_t>(request.From);
  const auto* const picture = card_.Execution.GetLivePicture();
  if (!from || picture == nullptr) return Refusal(400, "'from' must be the index of a point.");
  return {.ContentType = "application/octet-stream", .Body = ViewDrawing(*picture, *from)};
}

WebAnswer Site::ServeList(const WebRequest& request) const {
  const auto id = NumberOf<std::int32_t>(request.ListId);
  const auto from = NumberOf<std::uint32_t>(request.From);
  if (!id || !from) return Refusal(400, "'id' must be a list's and 'from' the index of a command.");
  try {
    return {.ContentType = JsonType, .Body = ViewCommands(card_, *id, *from)};
  } catch (const std::exception& error) {
    return Refusal(404, error.what());
  }
}

}  // namespace VELTRO::KELVO::VirtualCard
