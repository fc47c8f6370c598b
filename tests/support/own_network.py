"""A network that only this program and what it starts are in."""

import ctypes
import fcntl
import os
import socket
import struct

CLONE_NEWNET = 0x40000000
SIOCSIFFLAGS, SIOCSIFADDR = 0x8914, 0x8916
UP = 1


def enter():
    """Before any socket is made. False: only root may."""
    libc = ctypes.CDLL(None, use_errno=True)
    if libc.unshare(CLONE_NEWNET) != 0:
        return False
    _control(SIOCSIFFLAGS, "lo", struct.pack("H", UP))
    return True


def add_address(address):
    """As a cable or a wireless network does that is found."""
    _control(SIOCSIFADDR, "lo:1", struct.pack("HH4s", socket.AF_INET, 0, socket.inet_aton(address)))


def _control(command, interface, value):
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as handle:
        fcntl.ioctl(handle, command, struct.pack("16s24s", os.fsencode(interface), value))
