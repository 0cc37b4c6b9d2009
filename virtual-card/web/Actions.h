// What the page may do to the card.
#pragma once

#include <string>
#include <string_view>

#include "card/Card.h"

namespace VELTRO::KELVO::VirtualCard {

// `text` is an object of JSON whose "do" names the action and whose other members are its values. Throws
// std::runtime_error with a text for who asked.
void Act(Card& card, std::string_view text);

}  // namespace VELTRO::KELVO::VirtualCard
