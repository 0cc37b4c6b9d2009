// The four methods of a configuration record, as rows of a method table.
#pragma once

#include "config/RecordMethods.h"
#include "methods/MethodTable.h"

namespace VELTRO::KELVO::VirtualCard {

// The record that `member` of CardConfiguration keeps.
#define KELVO_KEPT(member) decltype(CardConfiguration::member)::Type

#define KELVO_RECORD_METHODS(member)                                                                        \
  Method(ClientLib::RecordMethods<KELVO_KEPT(member)>::Get,                                                 \
         [](Card& card) { return card.Configuration.member.Get(); }),                                       \
      Method(                                                                                               \
          ClientLib::RecordMethods<KELVO_KEPT(member)>::Set,                                                \
          [](Card& card, KELVO_KEPT(member) record) { card.Configuration.member.Set(std::move(record)); }), \
      Method(ClientLib::RecordMethods<KELVO_KEPT(member)>::Load,                                            \
             [](Card& card) { card.Configuration.member.Load(); }),                                         \
      Method(ClientLib::RecordMethods<KELVO_KEPT(member)>::Store,                                           \
             [](Card& card) { card.Configuration.member.Store(); })

}  // namespace VELTRO::KELVO::VirtualCard
