"""Whole games: games.py NAME LOCKSTEP RELAYMSG DIRECTORY runs the function of that name. An exception is a failure.

Nothing here waits for a time to pass: a process says that it is so far, or ends by itself. The limits below are
against a hang; a slow machine is far from them.
"""

import pathlib
import re
import signal
import socket
import subprocess
import sys

LIMIT = 150  # seconds
FRAMES = 150
TICK = 3  # milliseconds
SOON, LATE = 5000, 60000  # milliseconds until a program gives up: where that is what is tested, and where not
HEARTBEAT = bytes.fromhex("000003e9 00000007 03 0001 b8 00000000")  # of player 1001
NAME, LOCKSTEP, RELAYMSG, DIRECTORY = *sys.argv[1:4], pathlib.Path(sys.argv[4])
PLAY = pathlib.Path(__file__).resolve().parents[2] / "examples" / "lockstep" / "play.py"


def expect(true, *what):
    if not true:
        raise AssertionError(*what)


def play(*arguments):
    """Runs play.py; its status and what it printed."""
    command = [sys.executable, "-B", str(PLAY), "--lockstep", LOCKSTEP, "--directory", str(DIRECTORY),
               "--frames", str(FRAMES), "--tick", str(TICK), "--patience", str(LATE), "--limit", str(LIMIT - 20)]
    if RELAYMSG:
        command += ["--relaymsg", RELAYMSG]
    done = subprocess.run([*command, *arguments], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          timeout=LIMIT)
    print(done.stdout)
    return done.returncode, done.stdout


def start(*arguments):
    return subprocess.Popen([LOCKSTEP, *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)


def start_relay(*arguments, patience=LATE):
    """A relay, and its port."""
    relay = start("relay", "--tick", str(TICK), "--patience", str(patience), *arguments)
    word, port = relay.stdout.readline().split()
    expect(word == "port", word)
    return relay, port


def start_client(port, *arguments, patience=LATE):
    return start("client", "--port", port, "--player", "1001", "--patience", str(patience), *arguments)


def ended(process, status, complaint=""):
    """Waits for its end; it is the expected one."""
    _, errors = process.communicate(timeout=LIMIT)
    expect(process.returncode == status, process.args, process.returncode, errors)
    expect(complaint in errors, errors)


def wait_for_frame(relay, number):
    for line in relay.stdout:
        if line == f"frame {number}\n":
            return
    raise AssertionError("the relay ended early")


def losses_and_kill():
    """All that play.py has: all states are equal, and what was to happen did happen."""
    status, text = play("--loss", "20")
    expect(status == 0, "status", status)
    rows = [line.split() for line in text.splitlines() if re.match(r" +(player|\d{4}) ", line)]
    results = {row[0]: dict(zip(rows[0], row)) for row in rows[1:]}
    expect(set(results) == {"1001", "1002", "1003", "1004"}, results)
    expect({result["frame"] for result in results.values()} == {str(FRAMES)}, results)
    expect(len({result["state"] for result in results.values()}) == 1, results)
    expect([results[player]["version"] for player in sorted(results)] == ["3", "2", "1", "3"], results)
    for player in "1002", "1004":  # one came back, one came late: both had to catch up
        expect(int(results[player]["sought"]) > 0, player, results)
    expect(sum(int(result["resent"]) for result in results.values()) > 0, "no input was lost")
    expect(sum(int(result["synced"]) + int(result["empty"]) for result in results.values()) > 0,
           "no frame was lost")
    expect(sum(int(result["gems"]) for result in results.values()) > 0, "nobody played")
    if RELAYMSG:
        for command in ("LoginReq LoginRes StartReq StartRes Inputing LockStep SyncReq SyncRes MsgPack StopReq StopRes "
                        "CheckReq Error InputMulty").split():
            expect(f"\nstRelay{command} " in text, command)
        for command in "SeekPlayReq SeekPlayRes MsgHeartBeatReq MsgHeartBeatRes MsgStatUserReq MsgStatUserRes".split():
            expect(f"\nstCSRelay{command} " in text, command)
    logs = "".join(path.read_text() for path in DIRECTORY.glob("*.log"))
    expect("received stRelayLoginReq" in logs and "szSigBuf" not in logs and "player-1001" not in logs,
           "a signature is in a log")


def heavy_losses():
    """More is lost than comes through, the last frame as a rule."""
    status, text = play("--loss", "60")
    expect(status == 0, "status", status)
    expect("4 states, all equal" in text, text)


def wrong_game():
    """A client whose game goes wrong is told so, and the play as a whole fails."""
    status, text = play("--loss", "0", "--spoil", "1003")
    expect(status == 1, "status", status)
    expect("the state of player" in text and "differs at frame 75" in text, text)
    expect("the states are not equal" in text, text)


def loopback_only():
    """No socket of either program can be reached from outside."""
    relay, port = start_relay()
    client = start_client(port)
    for process in relay, client:
        seen = 0
        while seen < (3 if process is relay else 2):  # the listener, a connection, datagrams
            expect(process.poll() is None, "it ended early")
            links = [link.readlink() for link in pathlib.Path(f"/proc/{process.pid}/fd").iterdir()]
            inodes = {str(link)[8:-1] for link in links if str(link).startswith("socket:")}
            seen = 0
            for table in "tcp", "udp", "tcp6", "udp6":
                for line in pathlib.Path(f"/proc/{process.pid}/net/{table}").read_text().splitlines()[1:]:
                    fields = line.split()
                    if fields[9] in inodes:
                        seen += 1
                        expect(fields[1].startswith("0100007F:"), table, fields)
    client.kill()
    relay.kill()
    client.communicate()
    relay.communicate()


def relay_vanishes():
    relay, port = start_relay("--players", "1", "--frames", "100000")
    client = start_client(port)
    wait_for_frame(relay, 20)
    relay.kill()
    relay.communicate()
    ended(client, 1, "the relay ended the session")


def players_vanish():
    """Killed before the end of the game: the game waits for them, but not for ever."""
    relay, port = start_relay("--players", "1", "--frames", "100000", patience=SOON)
    client = start_client(port)
    wait_for_frame(relay, 10)
    client.kill()
    client.communicate()
    ended(relay, 1, "players are missing")


def one_player_vanishes():
    """Not enough players ever come: all ends."""
    relay, port = start_relay("--players", "2", patience=SOON)
    client = start_client(port)
    ended(relay, 1, "players are missing")
    ended(client, 1, "lockstep: ")  # the session ends, or, if this machine was that slow, there was none any more


def player_stands_still():
    """A process that is there, but does nothing: no connection breaks, only the limits of time help."""
    relay, port = start_relay("--players", "1", "--frames", "100000", patience=SOON)
    client = start_client(port, patience=SOON)
    wait_for_frame(relay, 10)
    client.send_signal(signal.SIGSTOP)
    ended(relay, 1, "players are missing")
    client.send_signal(signal.SIGCONT)
    ended(client, 1, "the relay")


def relay_stands_still():
    relay, port = start_relay("--players", "1", "--frames", "100000")
    client = start_client(port, patience=SOON)
    wait_for_frame(relay, 10)
    relay.send_signal(signal.SIGSTOP)
    ended(client, 1, "the relay is silent")
    relay.kill()
    relay.communicate()


def exchange(port, message):
    """Sends bytes over TCP, and returns all that comes until the relay closes."""
    with socket.create_connection(("127.0.0.1", int(port)), timeout=LIMIT) as tcp:
        tcp.sendall(message)
        tcp.shutdown(socket.SHUT_WR)
        answer = b""
        while piece := tcp.recv(4096):
            answer += piece
        return answer


def strange_bytes():
    """What is no message is answered by an error that says where, and ends that stream alone."""
    relay, port = start_relay("--players", "1", "--finishers", "1", "--frames", "30")
    cases = {
        "version": (HEARTBEAT[:8] + b"\x09" + HEARTBEAT[9:], b"BIX_ERR_VERSION_OUT_OF_RANGE at byte 8"),
        "command": (HEARTBEAT[:11] + b"\xff", b"unknown command"),
        # A login whose signature of 129 bytes cannot fit.
        "text": (HEARTBEAT[:11] + b"\xa1" + (129).to_bytes(4, "big") + b"x" * 129,
                 b"BIX_ERR_STRING_TOO_LONG"),
        # A pack of frames has room for half a megabyte: no client has that to say.
        "length": (HEARTBEAT[:11] + b"\xa7\x05" + (b"\0\0\0\1\x64" + (b"\0\0\0\1\4\0" + b"x" * 1024 + b"\0" * 3) * 100
                                                   + b"\0\0\0\0") * 5, b"a message longer than"),
    }
    for name, (message, complaint) in cases.items():
        try:
            answer = exchange(port, message)
        except (ConnectionResetError, BrokenPipeError):
            expect(name == "length", name)  # it does not take all that
            continue
        expect(complaint in answer, name, answer)
        expect(answer[11] == 194, name, answer)
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as udp:
        for message, _ in list(cases.values())[:3]:
            udp.sendto(message, ("127.0.0.1", int(port)))
    client = start_client(port)  # the relay is as well as ever
    ended(client, 0)
    ended(relay, 0)


def strange_requests():
    """Requests that are messages, but not ones that a player may make now."""
    relay, port = start_relay("--players", "1", "--finishers", "1", "--frames", "30")
    login = HEARTBEAT[:11] + b"\xa1" + (12).to_bytes(4, "big") + b"player-1001\0" + bytes(4)
    sync = HEARTBEAT[:11] + b"\xa8" + (1).to_bytes(4, "big") + (2).to_bytes(4, "big")
    wrapping = HEARTBEAT[:11] + b"\xa8" + (0).to_bytes(4, "big") + b"\xff" * 4
    expect(b"log in first" in exchange(port, HEARTBEAT))
    expect(b"signature" in exchange(port, login.replace(b"1001", b"1002")))
    backward = HEARTBEAT[:11] + b"\xa8" + (2).to_bytes(4, "big") + (0).to_bytes(4, "big")
    answer = exchange(port, login + sync + wrapping + backward)
    expect(answer.count(b"no such frames") == 3, answer)
    again = exchange(port, login + HEARTBEAT)
    expect(b"not a request of this game" in again, again)
    ended(start_client(port), 0)
    ended(relay, 0)


globals()[NAME]()
