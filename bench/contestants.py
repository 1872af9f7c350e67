"""The programs that are measured side by side, and that they do the same."""

import json
import pathlib
import re

from device import Contestant, LEGACY, WIFI

HERE = pathlib.Path(__file__).resolve().parent
EMPTY = Contestant("empty", ["/bench/bench-empty"])
PEER = Contestant("shell script", ["/bench/migrate.sh"])


def program(build_number):
    return Contestant("program", ["/bench/kelpwifiupdater", "--update-config", build_number])


def programs(build):
    """The files that a device needs for them."""
    names = ("kelpwifiupdater", "bench-floor", "bench-empty", "bench-usage")
    return [pathlib.Path(build, name) for name in names] + [HERE / "peer/migrate.sh", HERE / "peer/legacy.jq"]


def floor(device, inputs, before, after):
    """The bare file operations of a run that read the inputs and changed the files: each read once, the documents
    written, the same flushes and renames."""
    steps = [("read", path) for path in inputs]
    moves = {path: LEGACY + pathlib.Path(path).name for path in before if path not in after}
    moves = {path: to for path, to in moves.items() if to in after}
    steps += [("write", path, content) for path, content in after.items()
              if before.get(path) != content and path not in moves.values()]
    steps += [("make", LEGACY, WIFI)] if moves else []
    steps += [("move", path, to) for path, to in moves.items()]
    words = [word if isinstance(word, bytes) else word.encode() for step in steps for word in step]
    (device.folder / "bench/steps").write_bytes(b"".join(word + b"\0" for word in words))
    return Contestant("floor", ["/bench/bench-floor", "/bench/steps"])


def _document(content):
    """Without the secrets, which no shell script opens. Of a run of bytes that is no UTF-8 jq makes one U+FFFD."""
    text = re.sub("\ufffd+", "\ufffd", content.decode(errors="replace"))
    shown = json.loads(text, object_hook=lambda members: {k: v for k, v in members.items() if k != "password"})
    return json.dumps(shown, sort_keys=True)  # as texts: for Python true is 1


def differing_documents(program_files, peer_files):
    """The names of the documents in which the two differ; nothing where they say the same."""
    found = [{path: _document(content) for path, content in files.items() if path.startswith(WIFI) and ".json" in path}
             for files in (program_files, peer_files)]
    return [path for path in sorted(set(found[0]) | set(found[1])) if found[0].get(path) != found[1].get(path)]


def filter_list(stations):
    """Every section takes the same number of bytes: what grows is their number alone."""
    return "".join(f"[station_{n:06}]\nenable=yes\ndesc=Station {n:06}\n"
                   f"mac=02:00:{n >> 24 & 255:02x}:{n >> 16 & 255:02x}:{n >> 8 & 255:02x}:{n & 255:02x}\n\n"
                   for n in range(stations))
