#!/usr/bin/python3
"""A window titled `source` from which a file can be dragged, as from a file manager: drag_file.py FILE.

It says `dropped` when somebody has asked for the file. (Debian's own Python: it has the toolkit.)
"""

import pathlib
import sys

import gi

gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, Gtk  # noqa: E402


def give(_widget, _context, data, _info, _time):
    data.set_uris([pathlib.Path(sys.argv[1]).resolve().as_uri()])
    print("dropped", flush=True)


window = Gtk.Window(title="source")
window.set_default_size(200, 150)
handle = Gtk.EventBox()
handle.add(Gtk.Label(label=pathlib.Path(sys.argv[1]).name))
handle.drag_source_set(Gdk.ModifierType.BUTTON1_MASK, [Gtk.TargetEntry.new("text/uri-list", 0, 0)], Gdk.DragAction.COPY)
handle.connect("drag-data-get", give)
window.add(handle)
window.connect("destroy", Gtk.main_quit)
window.show_all()
Gtk.main()
