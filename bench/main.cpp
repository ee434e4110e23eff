/// Runs what was registered. All contenders stand in this one program, so that one run compares them.
#include "Run.h"

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    run::addCodec();
    run::addFloors();
    run::addPlain();
    run::addSeries();
#ifdef KORVAN_BENCH_PEERS
    run::addPeers();
#endif
    benchmark::AddCustomContext("compiler", KORVAN_BENCH_COMPILER);
    benchmark::AddCustomContext("flags", KORVAN_BENCH_FLAGS);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
