// The directories of the card, and ways to open a file in them.
#pragma once

#include "common/ReflectiveEnum.h"

namespace VELTRO::KELVO::ClientLib {

KELVO_ENUM(DirectorySelector, std::int32_t, BINFILES = 0, CORRFILES = 1, JOBFILES = 2, LISTFILES = 3,
           PROCVARFILES = 4)
KELVO_ENUM(FileMode, std::int32_t, CreateNew = 1, Create = 2, Open = 3, OpenOrCreate = 4, Truncate = 5,
           Append = 6)

}  // namespace VELTRO::KELVO::ClientLib
