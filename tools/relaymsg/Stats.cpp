#include "tools/relaymsg/Stats.h"

#include "tools/relaymsg/Reading.h"
#include "tools/relaymsg/Statistics.h"

namespace relaymsg {

ExitStatus stats(const StatsOptions& options) {
    Job job(options.file);
    const auto statistics = std::make_unique<Statistics>(options.users);
    Reading reading(job, options.input);
    const Origin* const origin = reading.messages().origin();
    const auto take = [&](MessageReader& stream) {
        const auto& head = stream.message().stHead;
        statistics->add(head.bCmdId, head.dwUserID, stream.bytes().size());
        if (origin != nullptr) {
            statistics->addTime(origin->nanoseconds);
        }
    };
    reading.each(options.selection, take, [](MessageReader&, MessageReader::Next) {});
    if (reading.any()) {
        job.out().append(options.json ? statistics->json() : statistics->table());
    }
    return job.end(reading.end());
}

} // namespace relaymsg
