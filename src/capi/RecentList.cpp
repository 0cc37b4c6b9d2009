#include "capi/RecentList.h"

#include "capi/APIContext.h"

namespace VELTRO::KELVO::ClientLib {

void RecentList::LookUp(std::int64_t list) {
  Release();  // first: what is looked up may not be there
  entry_ = APIContext::getInstance().Share(ListTable::ConnectionOf(list))->Lists.Get(list);
  handle_ = list;
}

}  // namespace VELTRO::KELVO::ClientLib
