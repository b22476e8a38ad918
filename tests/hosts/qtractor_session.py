#!/usr/bin/env python3
"""Qtractor's session files: one is made from the plug-in's state and what should be heard of it, which plays beside the plug-in
on outputs of its own; and the plug-in's state is taken out of one.

    qtractor_session.py make STATE PLUGIN.so EXPORT.wav SESSION.qtr
    qtractor_session.py state SESSION.qtr > STATE

Qtractor packs a plug-in's state as its toolkit does: the length in four bytes, deflated, in letters.
"""

import base64
import struct
import sys
import wave
import xml.etree.ElementTree as xml
import zlib

SESSION = """<!DOCTYPE qtractor-session>
<session name="sonorelle" version="0.9.31">
 <properties>
  <sample-rate>44100</sample-rate>
  <tempo>120</tempo>
  <ticks-per-beat>960</ticks-per-beat>
  <beats-per-bar>4</beats-per-bar>
  <beat-divisor>2</beat-divisor>
 </properties>
 <devices>
  <audio-engine>
   <audio-bus mode="duplex" name="Master">
    <channels>2</channels>
   </audio-bus>
   <audio-bus mode="output" name="Export">
    <channels>2</channels>
   </audio-bus>
  </audio-engine>
  <midi-engine>
   <midi-bus mode="duplex" name="Master"/>
  </midi-engine>
 </devices>
 <tracks>
  <track name="Choir" type="midi">
   <properties>
    <input-bus>Master</input-bus>
    <output-bus>Master</output-bus>
   </properties>
   <plugins>
    <plugin type="VST">
     <filename>{plugin}</filename>
     <index>0</index>
     <label>sonorelle</label>
     <activated>1</activated>
     <configs>
      <config key="chunk">{chunk}</config>
     </configs>
    </plugin>
   </plugins>
  </track>
  <track name="Export" type="audio">
   <properties>
    <output-bus>Export</output-bus>
   </properties>
   <clips>
    <clip name="Export">
     <properties>
      <start>0</start>
      <offset>0</offset>
      <length>{length}</length>
     </properties>
     <audio-clip>
      <filename>{export}</filename>
     </audio-clip>
    </clip>
   </clips>
  </track>
 </tracks>
</session>
"""


def make(state_name, plugin, export, session_name):
    with open(state_name, "rb") as file:
        state = file.read()
    chunk = base64.b64encode(struct.pack(">I", len(state)) + zlib.compress(state)).decode()
    with wave.open(export, "rb") as file:
        length = file.getnframes()
    with open(session_name, "w", encoding="utf-8") as file:
        file.write(SESSION.format(plugin=plugin, chunk=chunk, export=export, length=length))


def state_of(session_name):
    chunks = [node.text for node in xml.parse(session_name).iter("config") if node.get("key") == "chunk"]
    if len(chunks) != 1:
        sys.exit(f"{session_name} has {len(chunks)} states instead of one")
    packed = base64.b64decode("".join(chunks[0].split()))
    state = zlib.decompress(packed[4:])
    if len(state) != struct.unpack(">I", packed[:4])[0]:
        sys.exit(f"{session_name}: the state is not as long as it says")
    sys.stdout.buffer.write(state)


if __name__ == "__main__":
    if len(sys.argv) == 6 and sys.argv[1] == "make":
        make(*sys.argv[2:])
    elif len(sys.argv) == 3 and sys.argv[1] == "state":
        state_of(sys.argv[2])
    else:
        sys.exit(__doc__)
