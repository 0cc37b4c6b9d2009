#include "config/RecordMethods.h"

#include <array>
#include <type_traits>
#include <utility>
#include <vector>

#include "methods/MethodTable.h"

namespace VELTRO::KELVO::VirtualCard {

namespace {

// The four methods of the record that is that member of the configuration.
template <auto Member>
constexpr auto RowsOf() {
  using Kept = std::remove_reference_t<decltype(std::declval<CardConfiguration&>().*Member)>;
  using R = typename Kept::Content;
  using Names = ClientLib::RecordMethods<R>;
  return std::array{
      Method(Names::Get, [](Card& card) { return (card.Configuration.*Member).Get(); }),
      Method(Names::Set, [](Card& card, R record) { (card.Configuration.*Member).Set(std::move(record)); }),
      Method(Names::Load, [](Card& card) { (card.Configuration.*Member).Load(); }),
      Method(Names::Store, [](Card& card) { (card.Configuration.*Member).Store(); })};
}

template <auto Member>
void Add(std::vector<Method>& rows) {
  static constexpr auto Four = RowsOf<Member>();
  rows.insert(rows.end(), Four.begin(), Four.end());
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
    Add<&CardConfiguration::Gpio>(all);
    Add<&CardConfiguration::SerialPorts>(all);
    Add<&CardConfiguration::Spi>(all);
    Add<&CardConfiguration::AdapterBoard>(all);
    return all;
  }();
  return rows;
}

}  // namespace VELTRO::KELVO::VirtualCard
