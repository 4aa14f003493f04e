"""The network of a row: nothing but a loopback interface, up or down."""

import fcntl
import socket
import struct

SIOCGIFFLAGS, SIOCSIFFLAGS, IFF_UP = 0x8913, 0x8914, 1


def set_loopback(up):
    with socket.socket() as any_socket:
        request = struct.pack("16sh14x", b"lo", 0)
        flags = struct.unpack("16sh14x", fcntl.ioctl(any_socket, SIOCGIFFLAGS, request))[1]
        flags = flags | IFF_UP if up else flags & ~IFF_UP
        fcntl.ioctl(any_socket, SIOCSIFFLAGS, struct.pack("16sh14x", b"lo", flags))
