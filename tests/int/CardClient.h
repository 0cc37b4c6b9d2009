// Two kinds of clients: one that behaves, and one that sends whatever bytes it likes.
#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "int/CardProcess.h"
#include "lists/ListAPI.h"
#include "rpc/OutputPacket.h"
#include "rpc/RpcClient.h"

namespace VELTRO::KELVO::Test {

// Keeps every notification in the order of arrival, as "progress 5", "done 7", "idle 7", "error TEXT".
class CardClient {
 public:
  explicit CardClient(const CardProcess& card, const char* address = "127.0.0.1");

  ClientLib::RpcClient& Rpc() { return rpc_; }
  ClientLib::ListAPI& Lists() { return lists_; }

  // The notifications up to the next one that begins with `last`, which are then forgotten.
  std::vector<std::string> EventsUpTo(const std::string& last);
  // Uploads and executes a list and gives the events up to its idle.
  std::vector<std::string> Execute(int id, ClientLib::CommandList list);
  // Calls the method and gives the text of the error that comes back; "" when none does.
  template <class... Args>
  std::string ErrorOf(const char* method, const Args&... args) {
    try {
      rpc_.Call(method, args...);
    } catch (const ClientLib::RpcRemoteException& error) {
      return error.GetText();
    }
    return {};
  }

 private:
  void Keep(const ClientLib::RpcClientEvent& event);

  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::string> events_;
  ClientLib::ListEvents listEvents_;
  ClientLib::RpcClient rpc_;
  ClientLib::ListAPI lists_;
};

class RawConnection {
 public:
  explicit RawConnection(const CardProcess& card);
  ~RawConnection();
  RawConnection(const RawConnection&) = delete;
  RawConnection& operator=(const RawConnection&) = delete;

  void Send(std::string_view bytes);
  // The next `count` bytes that the card sends, or fewer when it sends no more.
  std::string Receive(std::size_t count);
  // Whether the card ends the connection within reasonable time; reads what it sends until then.
  bool IsEnded();

 private:
  int socket_;
};

}  // namespace VELTRO::KELVO::Test
