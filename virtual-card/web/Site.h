// What there is at which address: the page, what it shows of the card and what it does to it. It knows no connection.
#pragma once

#include "card/Card.h"
#include "web/Admission.h"
#include "web/EventRing.h"

namespace VELTRO::KELVO::VirtualCard {

// One thread's.
//   GET /, /page.css, ...           the page
//   GET /state                      all sections (CardView.h), the id of the latest event, the card's identity
//   GET /drawing?from=POINT         the drawing from there on
//   GET /list?id=ID&from=INDEX      commands of a list
//   POST /do                        an action (Actions.h)
// GET /events?after=ID, the stream, is the server's.
class Site {
 public:
  Site(Card& card, Admission admission);

  // Nothing when the request's head is let in.
  std::optional<WebAnswer> Refuse(const WebRequest& request) const { return admission_.Refuse(request); }
  // What is let in and no stream.
  WebAnswer Serve(const WebRequest& request);

  // Makes events of what has changed, of all sections or of the quick ones alone.
  void Look(bool all);
  EventRing& GetEvents() { return events_; }

 private:
  WebAnswer ServeFile(const WebRequest& request) const;
  WebAnswer ServeState();
  WebAnswer ServeDrawing(const WebRequest& request) const;
  WebAnswer ServeList(const WebRequest& request) const;

  Card& card_;
  const Admission admission_;
  const std::string epoch_;
  EventRing events_;
  std::vector<std::string> told_;  // of each section
};

}  // namespace VELTRO::KELVO::VirtualCard
