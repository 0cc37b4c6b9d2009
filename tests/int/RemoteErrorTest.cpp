// Errors that a card reports: from the wire, as text, and back.
#include <pthread.h>

#include <chrono>

#include "Helpers.h"
#include "rpc/RpcRemoteException.h"

namespace VELTRO::KELVO::ClientLib::Testing {
namespace {

RpcRemoteException FromBody(const std::string& body) {
  InputPacket packet = Received(PacketType::ErrorNotification, body);
  const auto object = packet.Unpack();
  return RpcRemoteException::FromObject(object.get());
}

std::string PackedAgain(const RpcRemoteException& error) {
  OutputPacket packet = OutputPacket::AllocateErrorNotification();
  error.Pack(packet);
  return BodyOf(packet);
}

TEST(RemoteError, ConvertsEveryGoodShape) {
  const struct {
    const char* Body;
    const char* Text;
    const char* StackTrace;
    const char* InnerText;  // null: none
  } rows[] = {
      {"93 A1 65 A1 73 C0", "e", "s", nullptr},
      {"93 C4 01 65 C4 01 73 C0", "e", "s", nullptr},       // byte strings
      {"93 A1 65 C0 C0", "e", "e: \n", nullptr},            // no second text: the collected one
      {"93 A0 A0 C0", "", "", nullptr},                     //
      {"95 A1 65 A1 73 07 90 C0", "e", "s", nullptr},       // only the first two and the last count
      {"93 A1 65 A1 73 93 A1 69 A1 74 C0", "e", "s", "i"},  //
      {"93 A1 65 C0 93 A1 69 A1 74 C0", "e", "e: \ni: t\n", "i"},
      {"94 A1 65 C0 C3 94 A1 69 C0 C2 93 A1 6A A1 75 C0", "e", "e: \ni: \nj: u\n", "i"},
      {"C0", "", "", nullptr},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.Body);
    const RpcRemoteException error = FromBody(Bytes(row.Body));
    EXPECT_EQ(error.GetText(), row.Text);
    EXPECT_EQ(error.GetStackTrace(), row.StackTrace);
    const auto inner = error.GetInner();
    ASSERT_EQ(inner.has_value(), row.InnerText != nullptr);
    if (inner) {
      EXPECT_EQ(inner->GetText(), row.InnerText);
    }
  }
}

TEST(RemoteError, RefusesEveryOtherShape) {
  for (const char* row : {
           "07", "A1 65", "80",                          // no array,
           "90", "92 A1 65 C0",                          // too short,
           "93 C0 A1 73 C0", "93 07 A1 73 C0",           // without a text,
           "93 A1 65 07 C0", "93 A1 65 90 C0",           // a second that is neither text nor nil,
           "93 A1 65 A1 73 C3", "93 A1 65 A1 73 A1 69",  // an inner that is neither error nor nil,
           "93 A1 65 A1 73 92 A1 69 C0", "93 A1 65 A1 73 93 A1 69 A1 74 90",  // or broken itself
       }) {
    EXPECT_THROW(FromBody(Bytes(row)), msgpack::type_error) << row;
  }
}

TEST(RemoteError, DescribesItselfBetweenFourLines) {
  const RpcRemoteException cause("cause", "at c");
  const RpcRemoteException middle("middle", std::nullopt, cause);
  const struct {
    RpcRemoteException Error;
    const char* Inner;
    const char* StackTrace;
  } rows[] = {
      {RpcRemoteException("top", "at t"), "", "at t\n"},
      {RpcRemoteException("top", "at t\nat u\n", middle), "middle: \ncause: at c\n", "at t\nat u\n"},
      {RpcRemoteException("top", std::nullopt, middle), "middle: \ncause: at c\n",
       "top: \nmiddle: \ncause: at c\n"},
  };
  const auto line = [](std::string word) { return word.append(50 - word.size(), '-'); };
  for (const auto& row : rows) {
    EXPECT_EQ(row.Error.what(), line("BeginException") + "\ntop\n" + line("InnerException") + "\n" +
                                    row.Inner + line("StackTrace") + "\n" + row.StackTrace +
                                    line("EndException"));
    EXPECT_STREQ(row.Error.base_what(), "Rpc remote exception occurred");
  }
}

TEST(RemoteError, TravelsThereAndBack) {
  for (const char* body : {"93 A1 65 C0 C0", "93 A0 A0 C0", "93 A1 65 A1 73 93 A1 69 C0 93 A1 6A A1 75 C0"}) {
    EXPECT_EQ(Hex(PackedAgain(FromBody(Bytes(body)))), body);
  }
  const RpcRemoteException error = FromBody(Bytes("93 A1 65 A1 73 93 A1 69 C0 93 A1 6A A1 75 C0"));
  EXPECT_EQ(Hex(PackedAgain(*error.GetInner())), "93 A1 69 C0 93 A1 6A A1 75 C0");
}

std::string DeepChain(std::size_t depth) {
  std::string body;
  for (std::size_t i = 0; i < depth; ++i) body += Bytes("93 A1 65 C0");
  return body + Bytes("C0");
}

// Everything that is done with an error. Returns whether it held what went in.
bool UseChain(std::size_t depth) {
  const std::string body = DeepChain(depth);
  const RpcRemoteException error = FromBody(body);
  const RpcRemoteException copy = error;
  const RpcRemoteException wrapped("w", std::nullopt, copy);
  return copy.GetStackTrace().size() == depth * 4 && std::string(wrapped.what()).size() > depth * 8 &&
         error.GetInner()->GetStackTrace().size() == (depth - 1) * 4 && PackedAgain(copy) == body;
}

TEST(RemoteError, ADeepChainNeedsNoStack) {
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 256 * 1024), 0);
  pthread_t thread{};
  bool held = false;
  const auto run = [](void* result) -> void* {
    *static_cast<bool*>(result) = UseChain(100000);
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &held), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  EXPECT_TRUE(held);
}

TEST(RemoteError, ADeepChainTakesTimeInProportion) {
  const auto seconds = [](std::size_t depth) {
    auto best = std::chrono::duration<double>::max();
    for (int i = 0; i < 3; ++i) {
      const auto begin = std::chrono::steady_clock::now();
      EXPECT_TRUE(UseChain(depth));
      best = std::min<std::chrono::duration<double>>(best, std::chrono::steady_clock::now() - begin);
    }
    return best.count();
  };
  // In proportion: 16 times as long. Were anything done for each error with all behind it: 256 times.
  EXPECT_LT(seconds(80000) / seconds(5000), 64);
}

}  // namespace
}  // namespace VELTRO::KELVO::ClientLib::Testing
