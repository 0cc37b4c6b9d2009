// What a run has prepared so far, so that a list that is called again and again is prepared once.
#pragma once

#include <cstdint>
#include <memory>
#include <unordered_map>

#include "execution/ListSource.h"
#include "execution/Program.h"

namespace VELTRO::KELVO::VirtualCard {

class Programs {
 public:
  explicit Programs(ListSource& lists) : lists_(lists) {}

  // The list as it is on the card now. Throws as ListSource and Program do.
  std::shared_ptr<const Program> FindList(std::int32_t id);
  // Takes over this state of it.
  std::shared_ptr<const Program> PrepareList(std::int32_t id, ListSnapshot list);

 private:
  struct Prepared {
    std::uint64_t Version = 0;
    std::shared_ptr<const Program> Commands;
  };

  ListSource& lists_;
  std::unordered_map<std::int32_t, Prepared> prepared_;
};

}  // namespace VELTRO::KELVO::VirtualCard
