// The opposite of shared_record_test.cpp: no NUL in the last byte of the text's array, so the first pack
// stores one while the other thread may read it. ThreadSanitizer must report a data race.
#include "protocol/cs_relay_msg.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <thread>

int main() {
    cs_relay_msg::CSRelayMsgLoginReq record;
    record.construct();
    std::memset(record.szSigBuf, 'x', sizeof(record.szSigBuf));
    record.szSigBuf[3] = '\0'; // a NUL earlier in the text is not enough
    std::atomic<bool> first{true};
    const auto pack = [&record] {
        char wire[cs_relay_msg::CSRelayMsgLoginReq::maxWireSize];
        return record.pack(wire, sizeof(wire));
    };
    std::thread other([&] {
        while (first.load(std::memory_order_relaxed)) { // behind the other in time, but not in order
            std::this_thread::yield();
        }
        (void)pack();
    });
    (void)pack();
    first.store(false, std::memory_order_relaxed);
    other.join();
    std::puts("both threads have packed");
}
