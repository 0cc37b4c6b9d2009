// What it takes to carry out a request.
#pragma once

#include <cstddef>
#include <span>

namespace VELTRO::KELVO::VirtualCard {

// An estimate of the bytes of memory, from above. A byte of a request may be an object that takes 24 once it is
// unpacked; it is looked at without unpacking anything.
std::size_t CostOf(std::span<const unsigned char> frame);

}  // namespace VELTRO::KELVO::VirtualCard
