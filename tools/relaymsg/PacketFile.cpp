#include "tools/relaymsg/PacketFile.h"

#include "protocol/Schema.h"
#include "tools/relaymsg/TextEscape.h"

#include <algorithm>

#ifdef RELAYMSG_PCAP
#include <cstdio>
#include <pcap/pcap.h>
#endif

namespace relaymsg {

bool isCapture(std::string_view start) {
    using namespace std::string_view_literals;
    constexpr std::string_view MAGICS[] = {
        "\xa1\xb2\xc3\xd4"sv, "\xd4\xc3\xb2\xa1"sv, // microseconds
        "\xa1\xb2\x3c\x4d"sv, "\x4d\x3c\xb2\xa1"sv, // nanoseconds
        "\xa1\xb2\xcd\x34"sv, "\x34\xcd\xb2\xa1"sv, // more about each packet
        "\x0a\x0d\x0d\x0a"sv,                       // pcapng
    };
    const bool magic =
        std::find(std::begin(MAGICS), std::end(MAGICS), start.substr(0, 4)) != std::end(MAGICS);
    // Where a message has its version, a capture has a time zone, 0, or the byte order of pcapng.
    return magic && (start.size() <= cs_relay_msg::schema::VERSION_BYTE ||
                     static_cast<uint8_t>(start[cs_relay_msg::schema::VERSION_BYTE]) - 1u > 2u);
}

#ifdef RELAYMSG_PCAP

struct PacketFile::Handle {
    ~Handle() {
        pcap_freecode(&filter);
        if (pcap != nullptr) {
            pcap_close(pcap); // closes the file, too
        }
    }
    pcap_t* pcap = nullptr;
    bpf_program filter{};
    bool filtered = false;
};

namespace {

/// The source as a file: 0 is its end, for whatever reason.
FILE* asFile(ByteSource& source) {
    cookie_io_functions_t functions{};
    functions.read = [](void* cookie, char* to, size_t size) {
        return static_cast<ssize_t>(static_cast<ByteSource*>(cookie)->read(to, size));
    };
    FILE* const file = fopencookie(&source, "rb", functions);
    constexpr size_t READ_SIZE = 64 * 1024;
    if (file != nullptr) {
        std::setvbuf(file, nullptr, _IOFBF, READ_SIZE);
    }
    return file;
}

bool compile(pcap_t* pcap, bpf_program& program, const std::string& filter) {
    return pcap_compile(pcap, &program, filter.c_str(), 1, PCAP_NETMASK_UNKNOWN) == 0;
}

} // namespace

std::string filterFault(const std::string& filter) {
    constexpr int LONGEST = 262144;
    pcap_t* const pcap = pcap_open_dead(DLT_EN10MB, LONGEST);
    bpf_program program{};
    const std::string fault = compile(pcap, program, filter) ? "" : pcap_geterr(pcap);
    pcap_freecode(&program);
    pcap_close(pcap);
    return fault;
}

PacketFile::PacketFile(ByteSource& source, const std::string& filter)
    : source_(source), handle_(std::make_unique<Handle>()) {
    char reason[PCAP_ERRBUF_SIZE] = "";
    FILE* const file = asFile(source);
    if (file == nullptr) {
        fail("cannot be read: there is no memory for it.");
        return;
    }
    handle_->pcap = pcap_fopen_offline_with_tstamp_precision(file, PCAP_TSTAMP_PRECISION_NANO, reason);
    if (handle_->pcap == nullptr) {
        std::fclose(file);
        fail(source.error().empty() ? "is no capture that can be read: " + escaped(reason) + "."
                                    : source.error());
        return;
    }
    handle_->filtered = !filter.empty();
    if (handle_->filtered && !compile(handle_->pcap, handle_->filter, filter)) {
        fail("cannot be filtered so: " + escaped(pcap_geterr(handle_->pcap)) + ".");
    }
}

bool PacketFile::next(RawPacket& packet) {
    constexpr int64_t SECOND = 1000000000;
    while (error_.empty()) {
        pcap_pkthdr* header = nullptr;
        const u_char* bytes = nullptr;
        const int result = pcap_next_ex(handle_->pcap, &header, &bytes);
        if (!source_.error().empty()) {
            fail(source_.error());
        } else if (result == PCAP_ERROR_BREAK) {
            return false;
        } else if (result != 1) {
            fail("cannot be read behind packet " + std::to_string(count_) + ": " +
                 escaped(pcap_geterr(handle_->pcap)) + ".");
        } else {
            ++count_;
            if (!handle_->filtered || pcap_offline_filter(&handle_->filter, header, bytes) != 0) {
                packet = {count_,
                          header->ts.tv_sec * SECOND + header->ts.tv_usec, // which are nanoseconds
                          {reinterpret_cast<const char*>(bytes), header->caplen},
                          header->len};
                return true;
            }
        }
    }
    return false;
}

int PacketFile::linkType() const {
    return handle_->pcap != nullptr ? pcap_datalink(handle_->pcap) : -1;
}

std::string PacketFile::linkTypeName() const {
    const char* const name = pcap_datalink_val_to_name(linkType());
    return name != nullptr ? name : std::to_string(linkType());
}

#else

struct PacketFile::Handle {};

std::string filterFault(const std::string&) {
    return "";
}

PacketFile::PacketFile(ByteSource& source, const std::string&) : source_(source) {
    fail("is a capture; this build of relaymsg reads none, since libpcap was missing.");
}

bool PacketFile::next(RawPacket&) {
    return false;
}

int PacketFile::linkType() const {
    return -1;
}

std::string PacketFile::linkTypeName() const {
    return "";
}

#endif

PacketFile::~PacketFile() = default;

} // namespace relaymsg
