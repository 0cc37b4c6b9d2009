// The list that a thread used last: whoever appends to one list looks it up once.
#pragma once

#include <cstdint>
#include <memory>

#include "capi/HandleTable.h"

namespace VELTRO::KELVO::ClientLib {

class RecentList {
 public:
  // The list of the handle, valid until the thread's next look-up. Throws as APIContext::Share and
  // ListTable::Get.
  ListTable::Entry& Find(std::int64_t list) {
    if (list != handle_ || !entry_ || entry_->IsReleased()) LookUp(list);
    return *entry_;
  }
  void Release() noexcept { entry_.reset(); }

 private:
  void LookUp(std::int64_t list);

  std::int64_t handle_ = 0;
  std::shared_ptr<ListTable::Entry> entry_;
};

}  // namespace VELTRO::KELVO::ClientLib
