// Reads files of captured packets.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>

struct pcap;

namespace VELTRO::KELVO::Tool {

class CaptureFile {
 public:
  struct Packet {
    std::chrono::microseconds Time;  // since 1970
    std::span<const unsigned char> Bytes;
    std::size_t WholeSize;  // of which the bytes may be the beginning
  };

  // Of "-" standard input. Throws Failure, Refused.
  explicit CaptureFile(const std::string& path);

  int GetLinkType() const;
  // Nothing at the end. Throws Failure, Refused, for what cannot be read.
  std::optional<Packet> Next();

 private:
  const std::string path_;
  std::unique_ptr<pcap, void (*)(pcap*)> file_;
};

}  // namespace VELTRO::KELVO::Tool
