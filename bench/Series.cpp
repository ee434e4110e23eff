/// Cost against size: payload length, number of data, number of frames.
#include "Run.h"

#include <initializer_list>

namespace run {

namespace {

void addPoint(const std::string& series, size_t x, works::MessagePtr record) {
    static std::vector<std::unique_ptr<works::Work>> kept; // the measurements point into them
    kept.push_back(std::make_unique<works::Work>(works::make('S', std::move(record))));
    const works::Work& work = *kept.back();
    const works::Message* const source = work.record.get();
    works::Message* const into = &target();
    char* const memory = output();
    const char* const wire = work.wire.data();
    const size_t size = work.wire.size();
    const std::string point = series + '/' + std::to_string(x);
    require(into->unpack(wire, size) == 0, point, "does not unpack");
    measure("series.pack/" + point, size, [=] {
        size_t used = 0;
        return source->pack(memory, OUTPUT_SIZE, &used) == 0 ? used : 0;
    });
    measure("series.unpack/" + point, size, [=] {
        size_t used = 0;
        return into->unpack(wire, size, &used) == 0 ? used : 0;
    });
}

} // namespace

void addSeries() {
    for (const uint16_t length : std::initializer_list<uint16_t>{0, 8, 16, 24, 32, 33, 48, 64, 96, 128, 192,
                                                                 256, 384, 512, 768, 1024}) {
        addPoint("payload", length, works::makeInput(length));
    }
    for (const uint8_t count :
         std::initializer_list<uint8_t>{0, 1, 2, 3, 5, 10, 20, 30, 40, 50, 60, 70, 80, 90, 100}) {
        addPoint("data", count, works::makeFramePack(1, count, 24));
    }
    for (const uint8_t frames : std::initializer_list<uint8_t>{0, 1, 2, 3, 4, 5}) {
        addPoint("frames", frames, works::makeFramePack(frames, 10, 24));
    }
}

} // namespace run
