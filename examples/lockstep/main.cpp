/// lockstep relay | client: two programs in one, each a process of its own.
#include "examples/lockstep/Client.h"
#include "examples/lockstep/Relay.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>

namespace {

int failed(const std::string& problem) {
    std::fprintf(stderr, "lockstep: %s\n", problem.c_str());
    return 1;
}

int runRelay(const lockstep::RelayOptions& options) {
    lockstep::Loop loop;
    lockstep::Relay relay(loop, options);
    std::printf("port %u\n", unsigned{relay.port()});
    std::fflush(stdout);
    loop.run();
    return relay.problem().empty() ? 0 : failed(relay.problem());
}

int runClient(lockstep::ClientOptions options) {
    if (options.signature.empty()) {
        options.signature = lockstep::signature(options.player);
    }
    lockstep::Loop loop;
    lockstep::Client client(loop, options);
    loop.run();
    if (!client.problem().empty()) {
        return failed(client.problem());
    }
    const lockstep::Numbers& numbers = client.numbers();
    const lockstep::Player* self = client.game().find(options.player);
    std::printf("result player=%u version=%u frame=%u state=%016llx gems=%u received=%u synced=%u empty=%u "
                "sought=%u resent=%u\n",
                options.player, options.version, client.game().tick(),
                static_cast<unsigned long long>(client.game().hash()), self != nullptr ? self->gems : 0,
                numbers.received, numbers.synced, numbers.empty, numbers.sought, numbers.resent);
    return 0;
}

int run(int argc, char** argv) {
    CLI::App app{"A lockstep game over 127.0.0.1. scripts/lockstep plays a whole one."};
    app.require_subcommand(1);

    lockstep::RelayOptions relay;
    CLI::App* relayCommand = app.add_subcommand("relay", "The server: prints the port that it listens on");
    relayCommand->add_option("--players", relay.players, "The game starts when so many are there");
    relayCommand->add_option("--finishers", relay.finishers, "It ends when so many have played to the end");
    relayCommand->add_option("--frames", relay.frames, "How long the game is");
    relayCommand->add_option("--tick", relay.tickMs, "Milliseconds from frame to frame");
    relayCommand->add_option("--seed", relay.seed, "Of the game and of the dice for losses");
    relayCommand->add_option("--loss", relay.loss, "Of 100 datagrams, how many to throw away");
    relayCommand->add_option("--patience", relay.patienceMs, "Milliseconds of silence until it gives up");
    relayCommand->add_option("--log", relay.log, "File for every message as text");
    relayCommand->add_option("--capture", relay.capture, "File for the bytes of every message");

    lockstep::ClientOptions client;
    CLI::App* clientCommand = app.add_subcommand("client", "A player");
    clientCommand->add_option("--port", client.port, "Of the relay")->required();
    clientCommand->add_option("--player", client.player, "Its id")->required();
    clientCommand->add_option("--version", client.version, "Of the protocol")->check(CLI::Range(1, 3));
    clientCommand->add_option("--signature", client.signature, "To log in with, if not the right one");
    clientCommand->add_option("--loss", client.loss, "Of 100 datagrams, how many to throw away");
    clientCommand->add_option("--patience", client.patienceMs, "Milliseconds of silence until it gives up");
    clientCommand->add_option("--spoil-at", client.spoilAt, "Frame at which its game goes wrong on purpose");
    clientCommand->add_flag("--draw", client.draw, "Show the game, on standard error");
    clientCommand->add_option("--log", client.log, "File for every message as text");

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    }
    return relayCommand->parsed() ? runRelay(relay) : runClient(client);
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        return failed(error.what());
    }
}
