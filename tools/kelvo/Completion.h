// What the shells complete with.
#pragma once

#include <string>
#include <vector>

namespace VELTRO::KELVO::Tool {

// "kelvo __complete WORD...": the words behind "kelvo" up to the one under the cursor, which may be empty. Prints what the
// last one can become, a line each: the word, and behind a tab what it is, if there is something to say. No blank follows
// a word that ends with "=", "/" or ".". The line ":files" stands for the files of this machine. Prints nothing, also on
// standard error, when there is nothing. Takes 250 ms at most: what a card that is slower knows is left out. A card is
// asked only where --card or KELVO_CARD names one. Shells that were started with an older version ask a newer one, so
// this form stays.
int Complete(const std::vector<std::string>& words);

}  // namespace VELTRO::KELVO::Tool
