#!/usr/bin/env python3
"""Plays a whole game: a relay and its clients, each a process of its own, with misfortunes on the way.

Three players begin, of versions 3, 2 and 1; a fourth joins late; the second is killed and comes back; somebody
without the right signature is refused. In the end every player's state must be the same. Exit status 0 if so.
"""

import argparse
import pathlib
import subprocess
import sys
import threading

FIRST, KILLED, OLDEST, LATE, STRANGER = 1001, 1002, 1003, 1004, 1005
VERSIONS = {FIRST: 3, KILLED: 2, OLDEST: 1, LATE: 3}

CLEAR, HIDE_CURSOR, SHOW_CURSOR = "\x1b[2J", "\x1b[?25l", "\x1b[?25h"


class Play:
    def __init__(self, options):
        self.options = options
        self.processes = []  # all that were started, to be ended whatever happens
        self.clients = {}
        self.port = None

    def start(self, name, *arguments, **pipes):
        process = subprocess.Popen([self.options.lockstep, *map(str, arguments)], text=True,
                                   stdin=subprocess.DEVNULL, **pipes)
        process.name = name
        self.processes.append(process)
        return process

    def path(self, name):
        return self.options.directory / name

    def say(self, text):
        if not self.options.draw:  # the picture has the terminal
            print(text, flush=True)

    def client(self, player, *arguments):
        draws = self.options.draw and player == FIRST
        if self.options.spoil == player:
            arguments += "--spoil-at", self.options.frames // 2
        with open(self.path(f"{player}.out"), "w") as out, open(self.path(f"{player}.err"), "w") as err:
            return self.start(f"player {player}", "client", "--port", self.port, "--player", player,
                              "--loss", self.options.loss, "--patience", self.options.patience,
                              "--log", self.path(f"{player}.log"),
                              *(["--draw"] if draws else []), *arguments,
                              stdout=out, stderr=None if draws else err)

    def join(self, player):
        self.say(f"player {player} joins, at version {VERSIONS[player]}")
        self.clients[player] = self.client(player, "--version", VERSIONS[player])

    def kill(self, player):
        self.say(f"player {player} is killed")
        self.clients[player].kill()
        self.clients[player].wait()

    def run(self):
        """Returns what went wrong, as a list of sentences."""
        misfortunes = {  # what happens at which frame
            self.options.frames * 2 // 10: lambda: self.join(LATE),
            self.options.frames * 4 // 10: lambda: self.kill(KILLED),
            self.options.frames * 6 // 10: lambda: self.join(KILLED),
        }
        relay = self.start("the relay", "relay", "--players", 3, "--finishers", len(VERSIONS),
                           "--frames", self.options.frames, "--tick", self.options.tick,
                           "--loss", self.options.loss, "--patience", self.options.patience,
                           "--log", self.path("relay.log"), "--capture", self.path("capture.bin"),
                           stdout=subprocess.PIPE)
        for line in relay.stdout:  # ends with the relay, which ends by itself
            word, number = line.split()
            if word == "port":
                self.port = int(number)
                stranger = self.client(STRANGER, "--signature", "guessed")
                for player in FIRST, KILLED, OLDEST:
                    self.join(player)
            elif word == "frame":
                misfortunes.pop(int(number), lambda: None)()

        problems = [f"{name} failed: {self.complaint(player)}" for name, player, process in
                    [("the relay", None, relay), *((p.name, i, p) for i, p in self.clients.items())]
                    if process.wait() != 0]
        if misfortunes:
            problems.append("the game was over too early")
        if stranger.wait() == 0 or "error 401" not in self.complaint(STRANGER):
            problems.append("a stranger was let in")
        return problems + self.compare()

    def complaint(self, player):
        return self.path(f"{player}.err").read_text().strip() if player else "see above"

    def compare(self):
        """Prints each client's result; the states must be one."""
        results = []
        for player in self.clients:
            for line in self.path(f"{player}.out").read_text().splitlines():
                word, *values = line.split()
                if word == "result":
                    results.append(dict(value.split("=") for value in values))
        if not results:
            return ["nobody came to the end"]
        print("  ".join(f"{name:>8}" for name in results[0]))
        for result in results:
            print("  ".join(f"{value:>8}" for value in result.values()))
        states = {(result["frame"], result["state"]) for result in results}
        if len(states) > 1 or len(results) < len(VERSIONS):
            return ["the states are not equal"]
        print(f"{len(results)} states, all equal: {results[0]['state']}")
        return []

    def end_all(self):
        for process in self.processes:
            if process.poll() is None:
                process.kill()


def decode(relaymsg, capture, summary):
    """Decodes what the relay sent and received, and shows the beginning and the totals."""
    with open(summary, "w") as out:
        status = subprocess.run([relaymsg, "decode", "--summary", capture], stdout=out).returncode
    lines = summary.read_text().splitlines()
    totals = lines.index("") if "" in lines else len(lines)
    print("", *lines[:12], "...", *lines[totals:], sep="\n")
    return [] if status == 0 else ["the capture cannot be decoded"]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--lockstep", required=True, help="the program")
    parser.add_argument("--relaymsg", help="the tool that decodes the capture")
    parser.add_argument("--directory", required=True, type=pathlib.Path, help="for logs and the capture")
    parser.add_argument("--frames", type=int, default=300, help="how long the game is, a multiple of 50")
    parser.add_argument("--tick", type=int, default=50, help="milliseconds from frame to frame")
    parser.add_argument("--loss", type=int, default=20, help="of 100 datagrams, how many are thrown away")
    parser.add_argument("--patience", type=int, default=10000, help="milliseconds of silence until a program gives up")
    parser.add_argument("--limit", type=int, default=120, help="seconds until all is ended by force")
    parser.add_argument("--spoil", type=int, help="the player whose game goes wrong on purpose")
    parser.add_argument("--draw", action="store_true", help="show the game as player 1001 sees it")
    options = parser.parse_args()
    options.directory.mkdir(parents=True, exist_ok=True)

    play = Play(options)
    watchdog = threading.Timer(options.limit, play.end_all)
    watchdog.start()
    if options.draw:
        print(CLEAR + HIDE_CURSOR, end="", flush=True)
    try:
        problems = play.run()
    finally:
        watchdog.cancel()
        play.end_all()
        if options.draw:
            print(SHOW_CURSOR, end="", flush=True)
    if options.relaymsg:
        problems += decode(options.relaymsg, options.directory / "capture.bin", options.directory / "capture.txt")
    print(f"\nThe capture, and the logs of all programs: {options.directory}")
    for problem in problems:
        print(problem, file=sys.stderr)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
