#include "CaptureFile.h"

#include <pcap/pcap.h>

#include "Failure.h"
#include "TcpSegment.h"

namespace VELTRO::KELVO::Tool {

CaptureFile::CaptureFile(const std::string& path) : path_(path), file_(nullptr, &pcap_close) {
  char reason[PCAP_ERRBUF_SIZE] = "";
  file_.reset(pcap_open_offline(path.c_str(), reason));
  if (!file_) throw Refused("Cannot read the capture '" + path + "': " + reason + ".");
  if (IsKnownLink(GetLinkType())) return;
  const char* const name = pcap_datalink_val_to_name(GetLinkType());
  throw Refused("'" + path + "' was captured from a kind of network that is not known here: " +
                (name == nullptr ? std::to_string(GetLinkType()) : name) + ".");
}

int CaptureFile::GetLinkType() const {
  return pcap_datalink(file_.get());
}

std::optional<CaptureFile::Packet> CaptureFile::Next() {
  pcap_pkthdr* header = nullptr;
  const unsigned char* bytes = nullptr;
  const int result = pcap_next_ex(file_.get(), &header, &bytes);
  if (result == PCAP_ERROR_BREAK) return std::nullopt;
  if (result != 1)
    throw Refused("Cannot read the capture '" + path_ + "': " + pcap_geterr(file_.get()) + ".");
  const auto time = std::chrono::seconds(header->ts.tv_sec) + std::chrono::microseconds(header->ts.tv_usec);
  return Packet{time, {bytes, header->caplen}, header->len};
}

}  // namespace VELTRO::KELVO::Tool
