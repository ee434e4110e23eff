#include "tools/relaymsg/CaptureStream.h"

#include "tools/relaymsg/Resync.h"

#include <algorithm>

namespace relaymsg {

CaptureStream::CaptureStream(ByteSource& source, const CaptureOptions& options, bool resync)
    : file_(source, options.filter), options_(options), resync_(resync) {
    if (file_.error().empty() && !isKnownLink(file_.linkType())) {
        file_.fail("holds packets of the kind " + file_.linkTypeName() + ", which cannot be looked into.");
    }
}

MessageReader::Next CaptureStream::next() {
    skipped_ = 0;
    for (;;) {
        if (inDatagram_) {
            if (const auto found = nextInDatagram()) {
                return *found;
            }
        } else if (!ready_.empty()) {
            if (const auto found = nextInConnection(*ready_.front())) {
                return *found;
            }
            ready_.pop_front();
        } else if (over_) {
            return Next::End;
        } else if (!readPacket()) {
            over_ = true;
            endAll();
        }
    }
}

// ---- Packets ----

bool CaptureStream::readPacket() {
    RawPacket packet;
    if (!file_.next(packet)) {
        return false;
    }
    const Payload payload = payloadOf(file_.linkType(), packet.bytes, packet.length);
    const Flow& flow = payload.flow;
    switch (payload.kind) {
    case Payload::Kind::Other:
        return true;
    case Payload::Kind::Fragment:
        ++counts_.fragments; // of whichever ports: only the first one tells
        return true;
    case Payload::Kind::Cut:
        ++counts_.cut;
        return true;
    case Payload::Kind::Udp:
    case Payload::Kind::Tcp:
        break;
    }
    if (!options_.wants(flow.from.port) && !options_.wants(flow.to.port)) {
        return true;
    }
    counts_.payloads += payload.bytes.empty() ? 0u : 1u;
    counts_.truncated += payload.missing != 0 ? 1u : 0u;
    origin_ = {packet.number, packet.nanoseconds, flow};
    payload.kind == Payload::Kind::Udp ? takeDatagram(payload) : takeSegment(payload);
    return true;
}

void CaptureStream::takeDatagram(const Payload& payload) {
    datagram_ = payload.bytes;
    datagramMissing_ = payload.missing;
    datagramAt_ = 0;
    taken_ = 0;
    inDatagram_ = true;
}

void CaptureStream::takeSegment(const Payload& payload) {
    if (payload.syn) {
        replace(payload);
    }
    Connection* const connection = connectionFor(payload);
    if (connection == nullptr) {
        return;
    }
    TcpDirection& direction = connection->direction;
    const uint32_t sequence = payload.sequence + (payload.syn ? 1 : 0);
    if (connection->over || connection->lost) {
        counts_.undecoded += direction.pass(sequence, payload.bytes.size());
    } else {
        direction.add(sequence, payload.bytes);
    }
    if (payload.fin) {
        direction.endAt(sequence + static_cast<uint32_t>(payload.bytes.size() + payload.missing));
    }
    connection->last = origin_;
    recount(*connection);
    ready_.push_back(connection);
    if (payload.rst) {
        endConnection(payload.flow);
        endConnection(payload.flow.reversed());
    } else if (direction.complete()) {
        endConnection(payload.flow);
    }
}

/// Ends what the endpoints of a new connection had before, unless @p syn was just sent again.
void CaptureStream::replace(const Payload& syn) {
    const auto known = connections_.find(syn.flow);
    if (known != connections_.end() && known->second.first != syn.sequence) {
        replaced_ = connections_.extract(known);
        replaced_.mapped().over = true;
        ready_.push_back(&replaced_.mapped());
    }
}

/// The connection of the segment; null if it is none to follow.
CaptureStream::Connection* CaptureStream::connectionFor(const Payload& payload) {
    const auto known = connections_.find(payload.flow);
    if (known != connections_.end()) {
        return &known->second;
    }
    if (!payload.syn && payload.bytes.empty()) {
        return nullptr;
    }
    if (connections_.size() >= options_.connections && !makeRoom()) {
        ++counts_.beyondConnections;
        return nullptr;
    }
    Connection& fresh =
        connections_.try_emplace(payload.flow, payload.sequence + (payload.syn ? 1 : 0)).first->second;
    fresh.first = payload.sequence;
    fresh.midway = !payload.syn;
    counts_.midway += fresh.midway ? 1u : 0u;
    return &fresh;
}

/// Forgets the connection whose end is longest ago. False if none has ended.
bool CaptureStream::makeRoom() {
    auto oldest = connections_.end();
    for (auto at = connections_.begin(); at != connections_.end(); ++at) {
        if (at->second.over &&
            (oldest == connections_.end() || at->second.last.packet < oldest->second.last.packet)) {
            oldest = at;
        }
    }
    if (oldest == connections_.end()) {
        return false;
    }
    held_ -= oldest->second.held;
    connections_.erase(oldest);
    return true;
}

void CaptureStream::endConnection(const Flow& flow) {
    const auto found = connections_.find(flow);
    if (found != connections_.end() && !found->second.over) {
        found->second.over = true;
        ready_.push_back(&found->second);
    }
}

/// After the last packet: ends all connections, in the order of their last packets.
void CaptureStream::endAll() {
    for (auto& [flow, connection] : connections_) {
        if (!connection.over) {
            connection.over = true;
            ready_.push_back(&connection);
        }
    }
    std::sort(ready_.begin(), ready_.end(),
              [](const Connection* a, const Connection* b) { return a->last.packet < b->last.packet; });
}

/// Counts what the connection holds now.
void CaptureStream::recount(Connection& connection) {
    held_ -= connection.held;
    connection.held = connection.direction.held();
    held_ += connection.held;
}

// ---- Messages ----

std::optional<MessageReader::Next> CaptureStream::nextInDatagram() {
    datagramAt_ += taken_;
    taken_ = 0;
    if (datagramAt_ == datagram_.size()) {
        inDatagram_ = false;
        return std::nullopt;
    }
    offset_ = datagramAt_;
    guessed_ = false;
    const Look found = look(datagram_.data() + datagramAt_, datagram_.size() - datagramAt_, true, false);
    taken_ = found == Look::Message ? length_ : datagram_.size() - datagramAt_;
    if (found == Look::Message) {
        return Next::Message;
    }
    ++counts_.failures;
    hint_ = datagramMissing_ == 0 ? ""
                                  : "The capture lacks the last " + std::to_string(datagramMissing_) +
                                        " bytes of the datagram.";
    return Next::Failure;
}

std::optional<MessageReader::Next> CaptureStream::nextInConnection(Connection& connection) {
    TcpDirection& direction = connection.direction;
    direction.take(taken_);
    taken_ = 0;
    origin_ = connection.last;
    if (connection.searching) {
        search(connection);
    }
    guessed_ = connection.guessed;
    if (connection.lost) {
        counts_.undecoded += direction.dropAll();
    } else if (!connection.searching && direction.size() != 0 &&
               (direction.size() >= connection.needed || connection.ends())) {
        offset_ = direction.place();
        const Look found = look(direction.bytes(), direction.size(), connection.ends(), connection.again);
        connection.again = found == Look::More;
        connection.needed = found == Look::More ? needed_ : 1;
        if (found == Look::Message) {
            taken_ = length_;
            return Next::Message;
        }
        if (found == Look::Failure) {
            return failed(connection);
        }
    }
    recount(connection);
    const bool waits = !connection.over && !overfull();
    if (!waits && direction.ahead() != 0) {
        return gap(connection);
    }
    if (!waits && (direction.size() != 0 || (connection.over && connection.searching))) {
        lose(connection);
        recount(connection);
    }
    return std::nullopt;
}

/// Looks on for messages in a connection that was lost.
void CaptureStream::search(Connection& connection) {
    TcpDirection& direction = connection.direction;
    if (direction.size() < connection.needed && !connection.ends()) {
        return;
    }
    const Place place = findMessages({direction.bytes(), direction.size()}, connection.ends());
    direction.take(place.at);
    connection.needed = place.found ? 1 : place.needed;
    if (place.found) {
        connection.searching = false;
        connection.guessed = true;
        skipped_ = direction.place() - connection.searchedFrom;
        counts_.undecoded += skipped_;
    }
}

MessageReader::Next CaptureStream::failed(Connection& connection) {
    ++counts_.failures;
    hint_ = connection.midway && !connection.guessed
                ? "The connection was open before the capture began: this may be the middle of a message."
                : "";
    connection.searchedFrom = offset_;
    connection.searching = resync_;
    connection.lost = !resync_;
    taken_ = resync_ ? 1 : 0;
    return Next::Failure;
}

MessageReader::Next CaptureStream::gap(Connection& connection) {
    TcpDirection& direction = connection.direction;
    const uint64_t from = connection.searching ? connection.searchedFrom : direction.place();
    offset_ = direction.place() + direction.size();
    counts_.undecoded += offset_ - from;
    missing_ = direction.missing();
    length_ = 0;
    available_ = 0;
    direction.passGap();
    connection.searchedFrom = direction.place();
    connection.searching = resync_;
    connection.lost = !resync_;
    connection.needed = 1;
    connection.again = false;
    return Next::Gap;
}

/// Gives up what is held of the connection.
void CaptureStream::lose(Connection& connection) {
    TcpDirection& direction = connection.direction;
    const uint64_t from = connection.searching ? connection.searchedFrom : direction.place();
    direction.dropAll();
    counts_.undecoded += direction.place() - from;
    connection.lost = connection.lost || !connection.over;
    connection.searching = false;
}

// ---- What is said at the end ----

namespace {

void say(std::vector<std::string>& sentences, uint64_t count, const std::string& one,
         const std::string& many) {
    if (count != 0) {
        sentences.push_back(std::to_string(count) + " " + (count == 1 ? one : many));
    }
}

} // namespace

std::vector<std::string> CaptureStream::leftOut() const {
    std::vector<std::string> sentences;
    say(sentences, counts_.fragments, "packet is a fragment of a larger one and was left out.",
        "packets are fragments of larger ones and were left out.");
    say(sentences, counts_.truncated, "packet was not captured to its end.",
        "packets were not captured to their end.");
    say(sentences, counts_.cut, "packet was left out: its headers are cut off or wrong.",
        "packets were left out: their headers are cut off or wrong.");
    say(sentences, counts_.beyondConnections,
        "packet of a further TCP connection was left out; --connections allows for more.",
        "packets of further TCP connections were left out; --connections allows for more.");
    say(sentences, counts_.undecoded, "byte of TCP was not decoded.", "bytes of TCP were not decoded.");
    say(sentences, counts_.midway, "TCP stream began before the capture did.",
        "TCP streams began before the capture did.");
    if (counts_.failures != 0 && !options_.choose()) {
        sentences.emplace_back("All of UDP and TCP was taken for messages; --port and --filter choose.");
    }
    return sentences;
}

std::string CaptureStream::emptiness() const {
    return "holds no message: of its " + std::to_string(file_.count()) + " packets, " +
           std::to_string(counts_.payloads) + " carry bytes over UDP or TCP" +
           (options_.choose() ? " and are asked for." : ".");
}

} // namespace relaymsg
