"""Writes capture files: payloads in UDP datagrams and in TCP connections, over IPv4."""

import struct

SERVER = bytes((192, 0, 2, 1))
CLIENT = bytes((192, 0, 2, 7))
SERVER_PORT = 9000
FIRST_CLIENT_PORT = 10000

UDP = 17
TCP = 6
FIN, SYN, PUSH, ACK = 1, 2, 8, 16

MAX_DATAGRAM = 65507
MAX_SEGMENT = 65495


def checksum(data):
    if len(data) % 2:
        data += b"\0"
    total = sum(struct.unpack(f">{len(data) // 2}H", data))
    while total >> 16:
        total = (total & 0xFFFF) + (total >> 16)
    return ~total & 0xFFFF


class Capture:
    """A capture under way. Each packet comes a millisecond behind the one before."""

    def __init__(self, path, snap_length=262144):
        self.file = open(path, "wb")
        self.snap_length = snap_length
        self.packets = 0
        self.connections = 0
        raw_ip = 101
        self.file.write(struct.pack(">IHHiIII", 0xA1B2C3D4, 2, 4, 0, 0, snap_length, raw_ip))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.file.close()

    def packet(self, data):
        kept = data[:self.snap_length]
        seconds, milliseconds = divmod(self.packets, 1000)
        self.file.write(struct.pack(">IIII", 1600000000 + seconds, milliseconds * 1000, len(kept), len(data)) + kept)
        self.packets += 1

    def ip(self, protocol, source, target, transport, checksum_at):
        """Sends a transport packet, of which the checksum is still 0."""
        pseudo = source + target + struct.pack(">BBH", 0, protocol, len(transport))
        transport = bytearray(transport)
        struct.pack_into(">H", transport, checksum_at, checksum(pseudo + bytes(transport)) or 0xFFFF)
        header = struct.pack(">BBHHHBBH", 0x45, 0, 20 + len(transport), self.packets & 0xFFFF, 0x4000, 64, protocol, 0)
        header += source + target
        header = header[:10] + struct.pack(">H", checksum(header)) + header[12:]
        self.packet(header + bytes(transport))

    def datagram(self, payload, to_server=True, client_port=FIRST_CLIENT_PORT, server_port=SERVER_PORT):
        ends = (CLIENT, SERVER, client_port, server_port) if to_server else (SERVER, CLIENT, server_port, client_port)
        header = struct.pack(">HHHH", ends[2], ends[3], 8 + len(payload), 0)
        self.ip(UDP, ends[0], ends[1], header + payload, 6)

    def connection(self, server_port=SERVER_PORT):
        self.connections += 1
        return Connection(self, FIRST_CLIENT_PORT + self.connections, server_port)


class Connection:
    """A TCP connection, opened."""

    def __init__(self, capture, client_port, server_port):
        self.capture = capture
        self.ports = (client_port, server_port)
        self.next = [1000, 5000]  # sequence number of the client and of the server
        self.segment(SYN)
        self.segment(SYN | ACK, to_server=False)
        self.segment(ACK)

    def segment(self, flags, payload=b"", to_server=True, at=None):
        """Sends a segment, by default the next one. What is sent at another place does not count as the next."""
        me, peer = (0, 1) if to_server else (1, 0)
        sequence = self.next[me] if at is None else at
        acknowledged = self.next[peer] if flags & ACK else 0
        header = struct.pack(">HHIIBBHHH", self.ports[me], self.ports[peer], sequence & 0xFFFFFFFF, acknowledged & 0xFFFFFFFF,
                             0x50, flags, 0xFFFF, 0, 0)
        ends = (CLIENT, SERVER) if to_server else (SERVER, CLIENT)
        self.capture.ip(TCP, *ends, header + payload, 16)
        if at is None:
            self.next[me] += len(payload) + (1 if flags & (SYN | FIN) else 0)

    def send(self, payload, to_server=True):
        for at in range(0, len(payload), MAX_SEGMENT):
            self.segment(PUSH | ACK, payload[at:at + MAX_SEGMENT], to_server)

    def close(self):
        self.segment(FIN | ACK)
        self.segment(FIN | ACK, to_server=False)
        self.segment(ACK)
