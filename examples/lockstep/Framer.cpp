#include "examples/lockstep/Framer.h"

namespace lockstep {

using cs_relay_msg::ScanStatus;

std::string Framer::describe(const cs_relay_msg::ScanResult& found) const {
    switch (found.status) {
    case ScanStatus::UnknownCommand:
        return "unknown command";
    case ScanStatus::Malformed: {
        char path[100];
        return std::string(Korvan::resultName(found.code)) + " at byte " + std::to_string(found.offset) +
               ", " + cs_relay_msg::scanPath(state_, path, sizeof(path));
    }
    default:
        return "a message longer than " + std::to_string(limit_) + " bytes";
    }
}

} // namespace lockstep
