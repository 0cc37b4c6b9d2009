// What a card tells of a list.
#pragma once

#include "common/ReflectiveEnum.h"

namespace VELTRO::KELVO::ClientLib {

// As the virtual card tells it; other cards may have other values, which are passed on.
KELVO_ENUM(ListStatus, std::int32_t, NoSuchList = 0, Ready = 1, Running = 2)

}  // namespace VELTRO::KELVO::ClientLib
