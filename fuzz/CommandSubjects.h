// What CommandFuzzer looks at, and what its subjects share.
#pragma once

#include <algorithm>
#include <span>
#include <stdexcept>

#include "Cursor.h"
#include "Require.h"
#include "lists/CommandList.h"

namespace VELTRO::KELVO::Fuzz {

using namespace ClientLib;

// A payload from anywhere is walked and rebuilt.
void LookAtPayload(Cursor input);
// A list from the wire is converted and packed again.
void LookAtList(Cursor input);
// A list that is built is read back.
void BuildList(Cursor input);

// A list as a whole, of which commands [first, last) are packed.
void CheckList(const CommandList& list, std::size_t first, std::size_t last);

inline bool SameBytes(std::span<const unsigned char> a, std::span<const unsigned char> b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end());
}

inline bool SameCommand(const CommandView& a, const CommandView& b) {
  return a.Code == b.Code && SameBytes(a.Payload, b.Payload);
}

// Whether `f` ends without an error. Only the errors that belong to the interface count as such.
bool Succeeds(auto&& f) {
  try {
    f();
    return true;
  } catch (const std::runtime_error&) {
    return false;
  }
}

}  // namespace VELTRO::KELVO::Fuzz
