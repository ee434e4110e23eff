/// @file
/// What a peer needs to take part: another library, the same content, its own wire.
///
/// A peer is a type with these members; what it keeps between calls (a builder, an arena) are its fields:
///
///     using Native;                                                 the record that the library works on
///     static void fill(Native&, const Message&);                    not measured
///     static void extract(const Native&, Message&);                 not measured, to check what was decoded
///     size_t pack(const Native&, char* memory, size_t size);        the bytes made
///     const char* packed(const char* memory);                       where these are: not always in that
///     memory bool unpack(Native&, const char* memory, size_t size);
///
/// A library that has no record of its own packs from the codec's and unpacks into it: Native is Message.
#ifndef KORVAN_BENCH_PEER_H
#define KORVAN_BENCH_PEER_H

#include "../Run.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace peers {

using namespace cs_relay_msg;
using Message = CSRelayMsg;

/// For peers that pack into the memory they are given.
struct InPlace {
    const char* packed(const char* memory) const { return memory; }
};

/// For peers that work on the codec's record.
struct OnRecord : InPlace {
    using Native = Message;
    static void fill(Message& native, const Message& message) {
        std::memcpy(static_cast<void*>(&native), &message, sizeof(message));
    }
    static void extract(const Message& native, Message& message) {
        std::memcpy(static_cast<void*>(&message), &native, sizeof(message));
    }
};

/// The number of a heartbeat, request and answer alike.
inline uint32_t heartBeat(const Message& m) {
    return m.stBody.stCSRelayMsgHeartBeatReq.dwUnused;
}

/// Copies a text of @p size characters into its array and ends it.
template <size_t Capacity>
bool setText(char (&text)[Capacity], const void* from, size_t size) {
    if (size >= Capacity) {
        return false;
    }
    std::memcpy(text, from, size);
    text[size] = '\0';
    return true;
}

/// Copies a payload into its array and sets its length.
inline bool setPayload(CSRelayData& data, const void* from, size_t size) {
    if (size > sizeof(data.szRelayBuf)) {
        return false;
    }
    data.wRelayLen = static_cast<uint16_t>(size);
    std::memcpy(data.szRelayBuf, from, size);
    return true;
}

/// A message in the peer's own form and on the peer's wire.
template <class Peer>
struct Item {
    std::unique_ptr<typename Peer::Native> native = std::make_unique<typename Peer::Native>();
    std::vector<uint64_t> wire; // aligned for any of them
    size_t size = 0;

    const char* data() const { return reinterpret_cast<const char*>(wire.data()); }
};

/// Fills, packs, unpacks and compares with the codec's wire.
template <class Peer>
std::unique_ptr<Item<Peer>> prepare(Peer& peer, typename Peer::Native& target, const std::string& who,
                                    const Message& source) {
    auto item = std::make_unique<Item<Peer>>();
    Peer::fill(*item->native, source);
    item->size = peer.pack(*item->native, run::output(), run::OUTPUT_SIZE);
    run::require(item->size != 0, who, "does not pack");
    item->wire.resize(item->size / 8 + 1);
    std::memcpy(item->wire.data(), peer.packed(run::output()), item->size);
    run::require(peer.unpack(target, item->data(), item->size), who, "does not unpack");
    const auto decoded = std::make_unique<Message>();
    Peer::extract(target, *decoded);
    size_t size = 0;
    size_t expected = 0;
    char* const second = run::output() + run::OUTPUT_SIZE / 2;
    run::require(decoded->pack(run::output(), run::OUTPUT_SIZE / 2, &size) == 0 &&
                     source.pack(second, run::OUTPUT_SIZE / 2, &expected) == 0 && size == expected &&
                     std::memcmp(run::output(), second, size) == 0,
                 who, "unpacks other content than the codec");
    return item;
}

/// Measures a peer on the works named by @p letters and on F. One that @p packsToo is measured packing as
/// well.
template <class Peer>
void add(const std::string& who, bool packsToo = true, const std::string& letters = "ABCDEG") {
    static Peer peer;
    static std::vector<std::unique_ptr<Item<Peer>>> items; // the measurements point into them
    // A record of its own for each work: one that once held a larger message would keep that one's memory.
    static std::vector<std::unique_ptr<typename Peer::Native>> targets;
    const auto makeTarget = [] {
        targets.push_back(std::make_unique<typename Peer::Native>());
        return targets.back().get();
    };
    char* const memory = run::output();
    for (const works::Work& work : works::all()) {
        if (letters.find(work.letter) == std::string::npos) {
            continue;
        }
        typename Peer::Native* const into = makeTarget();
        items.push_back(prepare(peer, *into, who + ' ' + work.letter, *work.record));
        const Item<Peer>* const item = items.back().get();
        if (packsToo) {
            run::measure(run::name("pack", work.letter, who), item->size,
                         [=] { return peer.pack(*item->native, memory, run::OUTPUT_SIZE); });
        }
        run::measure(run::name("unpack", work.letter, who), item->size,
                     [=] { return peer.unpack(*into, item->data(), item->size); });
    }

    // The stream: the messages one behind the other, each at a multiple of 8 bytes. Where each begins is
    // known from outside, and costs nothing.
    static std::vector<const Item<Peer>*> order;
    const works::Stream& stream = works::stream();
    typename Peer::Native* const into = makeTarget();
    std::vector<const Item<Peer>*> pool;
    for (const works::MessagePtr& message : stream.pool) {
        items.push_back(prepare(peer, *into, who + " F", *message));
        pool.push_back(items.back().get());
    }
    static std::vector<uint64_t> wire;
    size_t bytes = 0;
    for (const Message* message : stream.order) {
        size_t i = 0;
        while (stream.pool[i].get() != message) {
            ++i;
        }
        order.push_back(pool[i]);
        wire.insert(wire.end(), pool[i]->wire.begin(), pool[i]->wire.end());
        bytes += pool[i]->size;
    }
    if (packsToo) {
        run::measure(run::name("pack", 'F', who), bytes, [=] {
            size_t used = 0;
            for (const Item<Peer>* item : order) {
                used += (peer.pack(*item->native, memory + used, run::OUTPUT_SIZE - used) / 8 + 1) * 8;
            }
            return used;
        });
    }
    run::measure(run::name("unpack", 'F', who), bytes, [=] {
        const char* at = reinterpret_cast<const char*>(wire.data());
        bool good = true;
        for (const Item<Peer>* item : order) {
            good = peer.unpack(*into, at, item->size) && good;
            benchmark::DoNotOptimize(into);
            benchmark::ClobberMemory();
            at += item->wire.size() * 8;
        }
        return good;
    });
}

// Each peer registers itself through one of these.

void addProtobuf();
void addFlatBuffers();
void addCapnProto();
void addMsgpack();
void addNanopb();
void addCereal();
void addBoost();
void addNlohmann();

} // namespace peers

#endif
