/// @file
/// The packets of a capture, as they were captured.
#ifndef KORVAN_TOOLS_RELAYMSG_PACKET_FILE_H
#define KORVAN_TOOLS_RELAYMSG_PACKET_FILE_H

#include "tools/relaymsg/ByteSource.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace relaymsg {

struct RawPacket {
    uint64_t number = 0; ///< from 1, those that a filter left out included
    int64_t nanoseconds = 0;
    std::string_view bytes; ///< those captured, until the next packet is asked for
    size_t length = 0;      ///< bytes that it had on the wire
};

/// Whether @p start, at least the first 9 bytes of an input, begins a capture. No message begins so.
bool isCapture(std::string_view start);

/// Why @p filter is no capture filter; empty if it is one, at least for Ethernet.
std::string filterFault(const std::string& filter);

/// Reads pcap and pcapng through libpcap.
class PacketFile {
public:
    /// Reads from @p source, which must outlive this. If that is no capture, `error` says so.
    /// @param filter a capture filter; empty for all packets
    PacketFile(ByteSource& source, const std::string& filter);
    ~PacketFile();
    PacketFile(const PacketFile&) = delete;
    PacketFile& operator=(const PacketFile&) = delete;

    /// Goes to the next packet that the filter lets through; false if there is none.
    bool next(RawPacket& packet);

    /// The kind of the packets' first header, as DLT_... of libpcap.
    int linkType() const;
    std::string linkTypeName() const;

    /// Packets so far, those that the filter left out included.
    uint64_t count() const { return count_; }

    /// Why the packets ended before their time, a sentence whose subject is the capture.
    const std::string& error() const { return error_; }

    /// Ends the packets here.
    void fail(std::string sentence) { error_ = std::move(sentence); }

private:
    struct Handle;

    ByteSource& source_;
    std::unique_ptr<Handle> handle_;
    uint64_t count_ = 0;
    std::string error_;
};

} // namespace relaymsg

#endif
