#!/usr/bin/env python3
"""Prints what a JACK server's transport does and where it is, in frames, such as "Rolling 44100".

    jack_clock.py            as it is
    jack_clock.py rewind     after it was sent to the beginning
"""

import ctypes
import sys
import time

STATES = {0: "Stopped", 1: "Rolling", 3: "Starting"}
NO_START_SERVER = 1


def main():
    jack = ctypes.CDLL("libjack.so.0")
    jack.jack_client_open.restype = ctypes.c_void_p
    jack.jack_get_current_transport_frame.restype = ctypes.c_uint32
    opened = jack.jack_client_open(b"clock", NO_START_SERVER, None)
    if not opened:
        sys.exit("there is no JACK server")
    client = ctypes.c_void_p(opened)
    if sys.argv[1:] == ["rewind"]:
        jack.jack_transport_locate(client, ctypes.c_uint32(0))
        time.sleep(0.2)  # some periods
    print(STATES.get(jack.jack_transport_query(client, None), "?"), jack.jack_get_current_transport_frame(client))
    jack.jack_client_close(client)


if __name__ == "__main__":
    main()
