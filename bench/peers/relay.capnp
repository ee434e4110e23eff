# The measured messages as Cap'n Proto would carry them.
@0xb6d4a1f3e29c5078;

using Cxx = import "/capnp/c++.capnp";
$Cxx.namespace("relay_cp");

struct Datum {
  objectId @0 :UInt32;
  relayBuf @1 :Data;
  userStatusFlag @2 :UInt8;
  sequance @3 :UInt16;
}

struct Login {
  sigBuf @0 :Data;
  reserve @1 :UInt32;
}

struct Input {
  relayData @0 :Datum;
  repeatCount @1 :UInt8;
}

struct Frame {
  frameId @0 :UInt32;
  relayData @1 :List(Datum);
  lastHasDataFrameId @2 :UInt32;
}

struct Statistics {
  room @0 :Data;
  user @1 :Data;
  process @2 :Data;
}

struct Message {
  userId @0 :UInt32;
  roomId @1 :UInt32;
  version @2 :UInt8;
  asyncId @3 :UInt16;
  cmdId @4 :UInt8;
  union {
    heartBeat @5 :UInt32;
    login @6 :Login;
    input @7 :Input;
    framePack @8 :List(Frame);
    statistics @9 :Statistics;
  }
}
