// A record whose string arrays all hold a NUL in their last byte is only read by pack and visualize: two
// threads may do both at once. ThreadSanitizer shows that nothing is written; shared_record_race.cpp shows
// that it would see it.
#include "tests/memory/Oracle.h"
#include "tests/support/EveryType.h"
#include "tests/support/Memory.h"

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace tests {

using cs_relay_msg::schema::Kind;
using cs_relay_msg::schema::Type;

KORVAN_EVERY_TYPE(SharedRecord);

namespace {

struct Output {
    std::vector<char> wire, text;
    int32_t packed = 0, rendered = 0;

    Output(size_t wireSize, size_t textSize) : wire(wireSize), text(textSize) {}

    void make(const Instance& instance) {
        Korvan::BixWriteBuf out(wire.data(), wire.size());
        packed = instance.type.pack(instance.record.data(), out, instance.version);
        Korvan::BixWriteBuf lines(text.data(), text.size());
        rendered = instance.type.visualize(instance.record.data(), lines, 0, '\n');
    }
};

} // namespace

TEST_P(SharedRecord, IsPackedAndRenderedByTwoThreads) {
    for (const int command : commandsFor(type())) {
        Instance instance(type(), type().currentVersion, TINY.of(command), random);
        for (const Site& site : instance.sites) {
            if (site.field->kind == Kind::String) {
                instance.record[site.memory + site.field->bound - 1] = '\0';
            }
        }
        const size_t textSize = Text(instance).whole().size() + 1;
        Output one(instance.wire.size(), textSize), two = one;
        std::atomic<int> ready{0};
        const auto run = [&](Output& output) {
            ready.fetch_add(1, std::memory_order_relaxed); // both at once, but in no order that hides a race
            while (ready.load(std::memory_order_relaxed) < 2) {
                std::this_thread::yield();
            }
            output.make(instance);
        };
        std::thread other(run, std::ref(one));
        run(two);
        other.join();
        EXPECT_EQ(one.packed, 0);
        EXPECT_EQ(two.packed, 0);
        EXPECT_EQ(one.rendered, 0);
        EXPECT_EQ(two.rendered, 0);
        EXPECT_EQ(one.wire, instance.wire);
        EXPECT_EQ(two.wire, instance.wire);
        EXPECT_EQ(one.text, two.text);
    }
}

} // namespace tests
