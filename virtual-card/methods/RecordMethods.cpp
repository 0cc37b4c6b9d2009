#include "config/RecordMethods.h"

#include <utility>
#include <vector>

#include "methods/MethodTable.h"

namespace VELTRO::KELVO::VirtualCard {

namespace {

// The four methods of the record that is that member of the configuration.
template <auto Member>
void Add(std::vector<Method>& rows) {
  using R = typename std::remove_reference_t<decltype(std::declval<CardConfiguration&>().*Member)>::Content;
  static const ClientLib::RecordMethods names(R::Name);
  rows.emplace_back(names.Get, [](Card& card) { return (card.Configuration.*Member).Get(); });
  rows.emplace_back(names.Set,
                    [](Card& card, R record) { (card.Configuration.*Member).Set(std::move(record)); });
  rows.emplace_back(names.Load, [](Card& card) { (card.Configuration.*Member).Load(); });
  rows.emplace_back(names.Store, [](Card& card) { (card.Configuration.*Member).Store(); });
}

}  // namespace

std::span<const Method> RecordMethods() {
  static const std::vector<Method> rows = [] {
    std::vector<Method> all;
    Add<&CardConfiguration::Laser>(all);
    Add<&CardConfiguration::Scanner>(all);
    Add<&CardConfiguration::Variables>(all);
    Add<&CardConfiguration::System>(all);
    Add<&CardConfiguration::Motf>(all);
    Add<&CardConfiguration::QuadratureDecoder>(all);
    Add<&CardConfiguration::Events>(all);
    return all;
  }();
  return rows;
}

}  // namespace VELTRO::KELVO::VirtualCard
