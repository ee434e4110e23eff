#include "tools/relaymsg/Stats.h"

#include "tools/relaymsg/Reading.h"
#include "tools/relaymsg/Statistics.h"

namespace relaymsg {

ExitStatus stats(const StatsOptions& options) {
    Job job(options.file);
    const auto bytes = openForm(job.file(), options.form);
    const auto statistics = std::make_unique<Statistics>(options.users);
    Reading reading(job, *bytes);
    reading.each(options.selection, [&](MessageStream& stream) {
        const auto& head = stream.message().stHead;
        statistics->add(head.bCmdId, head.dwUserID, stream.bytes().size());
    });
    if (reading.any()) {
        job.out().append(options.json ? statistics->json() : statistics->table());
    }
    return job.end(reading.end());
}

} // namespace relaymsg
