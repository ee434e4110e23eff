#include "Peer.h"

namespace run {

void addPeers() {
    peers::addProtobuf();
    peers::addFlatBuffers();
    peers::addCapnProto();
    peers::addMsgpack();
    peers::addNanopb();
    peers::addCereal();
    peers::addBoost();
    peers::addNlohmann();
}

} // namespace run
