#!/usr/bin/env python3
"""Puts into an Ardour session what Ardour's own tool cannot, and takes the plug-in's state out of it.

    ardour_session.py put FILE.ardour STATE FRAMES    the plug-in's state; the session's length; 16-bit recordings
    ardour_session.py get FILE.ardour STATE           the plug-in's state into a file; fails when there is none
"""

import base64
import re
import sys

PLUGIN = re.compile(r"(<lxvst\b[^>]*?)(?:/>|>.*?</lxvst>)", re.DOTALL)
CHUNK = re.compile(r"<chunk\b[^>]*>(.*?)</chunk>", re.DOTALL)
RANGE = '<Locations><Location id="900001" name="session" start="a0" end="a%d" flags="IsSessionRange" locked="0"/></Locations>'
# Ardour keeps places in the ticks of its superclock.
TICKS = 282240000


def once(session, pattern, text):
    session, count = re.subn(pattern, text, session, flags=re.DOTALL)
    if count != 1:
        sys.exit(f"{pattern}: {count} times in the session")
    return session


def put(session, state, frames):
    rate = int(re.search(r'<Session [^>]*sample-rate="(\d+)"', session)[1])
    chunk = base64.b64encode(state).decode()
    session = once(session, PLUGIN.pattern, rf'\1><chunk program="0">{chunk}</chunk></lxvst>')
    session = once(session, "<Locations/>", RANGE % (frames * TICKS // rate))
    return once(session, '"native-file-data-format" value="FormatFloat"', '"native-file-data-format" value="FormatInt16"')


def get(session):
    chunks = CHUNK.findall(session)
    if len(chunks) != 1:
        sys.exit(f"{len(chunks)} states in the session")
    return base64.b64decode(chunks[0])


def main():
    what, session_name, state_name = sys.argv[1:4]
    with open(session_name, encoding="utf-8") as file:
        session = file.read()
    if what == "put":
        with open(state_name, "rb") as file:
            session = put(session, file.read(), int(sys.argv[4]))
        with open(session_name, "w", encoding="utf-8") as file:
            file.write(session)
    else:
        with open(state_name, "wb") as file:
            file.write(get(session))


if __name__ == "__main__":
    main()
