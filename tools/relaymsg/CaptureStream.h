/// @file
/// The messages in a capture, in the order in which their last bytes were captured.
#ifndef KORVAN_TOOLS_RELAYMSG_CAPTURE_STREAM_H
#define KORVAN_TOOLS_RELAYMSG_CAPTURE_STREAM_H

#include "tools/relaymsg/CaptureOptions.h"
#include "tools/relaymsg/MessageReader.h"
#include "tools/relaymsg/PacketFile.h"
#include "tools/relaymsg/Payload.h"
#include "tools/relaymsg/TcpDirection.h"

#include <deque>
#include <map>

namespace relaymsg {

/// Each UDP datagram is a stream of its own, and so is each direction of a TCP connection. A failure ends its
/// stream; the others go on.
class CaptureStream final : public MessageReader {
public:
    /// Reads from @p source, which must outlive this. @param resync whether to go on in a TCP stream behind
    /// a failure or a gap, where messages seem to follow each other again
    CaptureStream(ByteSource& source, const CaptureOptions& options, bool resync);

    Next next() override;
    const Origin* origin() const override { return &origin_; }
    std::string hint() const override { return hint_; }
    std::vector<std::string> leftOut() const override;
    std::string emptiness() const override;
    const std::string& error() const override { return file_.error(); }

private:
    struct Connection {
        explicit Connection(uint32_t firstByte) : direction(firstByte) {}

        TcpDirection direction;
        uint32_t first = 0;     ///< the sequence number of its first packet
        Origin last;            ///< its last packet
        size_t needed = 1;      ///< bytes that must be there before a look at them tells more
        bool again = false;     ///< whether a look was in vain
        bool midway = false;    ///< it was open before the capture began
        bool over = false;      ///< no more bytes follow
        bool lost = false;      ///< where a message begins is not known any more
        bool searching = false; ///< nor was it, but it is searched for
        bool guessed = false;
        uint64_t searchedFrom = 0;
        size_t held = 0; ///< as counted in `held_`

        bool ends() const { return over && direction.ahead() == 0; }
    };
    using Connections = std::map<Flow, Connection>;

    /// What is said of at the end.
    struct Counts {
        uint64_t payloads = 0; ///< UDP or TCP, of the ports asked for, with bytes
        uint64_t failures = 0;
        uint64_t fragments = 0;
        uint64_t cut = 0;
        uint64_t truncated = 0;
        uint64_t midway = 0;
        uint64_t beyondConnections = 0;
        uint64_t undecoded = 0; ///< bytes
    };

    bool readPacket();
    void takeDatagram(const Payload& payload);
    void takeSegment(const Payload& payload);
    void replace(const Payload& syn);
    Connection* connectionFor(const Payload& payload);
    bool makeRoom();
    void endConnection(const Flow& flow);
    void endAll();
    void recount(Connection& connection);
    bool overfull() const { return held_ > options_.held * 1024 * 1024; }

    std::optional<Next> nextInDatagram();
    std::optional<Next> nextInConnection(Connection& connection);
    void search(Connection& connection);
    Next failed(Connection& connection);
    Next gap(Connection& connection);
    void lose(Connection& connection);

    PacketFile file_;
    CaptureOptions options_;
    bool resync_;
    bool over_ = false;
    Origin origin_;
    Counts counts_;
    std::string hint_;
    size_t taken_ = 0; ///< bytes of the last event, which are still to be taken from their stream

    std::string datagram_;
    size_t datagramAt_ = 0;
    size_t datagramMissing_ = 0;
    bool inDatagram_ = false;

    Connections connections_;
    size_t held_ = 0;                 ///< by all connections
    std::deque<Connection*> ready_;   ///< those in which there may be something new
    Connections::node_type replaced_; ///< a connection whose endpoints began another one
};

} // namespace relaymsg

#endif
