#!/usr/bin/env python3
"""Checks the direction of every include below src/: floors, circles of files and of folders, and where foreign headers
may stand."""
import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
SRC = ROOT / "src"
INCLUDE = re.compile(r'^\s*#\s*include\s+([<"])([^>"]+)[>"]', re.M)

# Headers of C libraries stay in the folders that wrap them; nobody above meets their types.
FOREIGN = {
    r"^libav|^libsw": ["platform/media/ffmpeg"],
    r"^pipewire/|^spa/": ["platform/pipewire", "platform/hal/pipewire", "platform/media/movie/pipewire"],
    r"^libxml/": ["platform/foundation"],
    r"^taglib/": ["tags/taglib"],
    r"^unicode/": ["lang", "util"],
    r"^QtDBus|^QDBus": ["platform/desktop", "platform/media/movie/portal", "cli", "app"],
    r"^QtWidgets|^QWidget|^QMessageBox|^QDialog": ["ui", "app", "editor/views"],
    r"^CLI/": ["cli"],
}
# Only the composition roots name a concrete backend.
CONCRETE = ["platform/hal/pipewire", "platform/hal/embedded", "platform/media/ffmpeg", "platform/desktop/dbus",
            "platform/desktop/recorded", "platform/media/movie/portal",
            "platform/media/movie/camera"]


def read_table(text):
    floors, exceptions = {}, {}
    for line in text.splitlines():
        line = line.split("#")[0].strip()
        if "->" in line:
            pair, _, reason = line.partition(":")
            left, _, right = (part.strip() for part in pair.partition("->"))
            if not reason.strip():
                sys.exit(f"floors.txt: exception without a reason: {line}")
            exceptions[(left, right)] = False
        elif line:
            folder, number = line.split()
            floors[folder] = int(number)
    return floors, exceptions


def folder_of(path):
    return path.rpartition("/")[0]


def inside(path, folders):
    return any(path.startswith(folder + "/") for folder in folders)


def find_cycle(graph):
    state, stack = {}, []

    def visit(node):
        state[node] = 1
        stack.append(node)
        for following in sorted(graph.get(node, ())):
            if state.get(following) == 1:
                return stack[stack.index(following):] + [following]
            if following not in state:
                found = visit(following)
                if found:
                    return found
        stack.pop()
        state[node] = 2
        return None

    for node in sorted(graph):
        if node not in state:
            found = visit(node)
            if found:
                return found
    return None


def main():
    floors, exceptions = read_table((ROOT / "scripts/checks/floors.txt").read_text())
    faults, graph, folders = [], {}, {}
    files = sorted(p for p in SRC.rglob("*") if p.suffix in (".h", ".cpp"))
    for file in files:
        path = file.relative_to(SRC).as_posix()
        folder = folder_of(path)
        if folder not in floors:
            faults.append(f"{path}: its folder has no floor in scripts/checks/floors.txt")
            continue
        graph[path] = []
        for kind, name in INCLUDE.findall(file.read_text()):
            if kind == "<":
                for pattern, homes in FOREIGN.items():
                    if re.search(pattern, name) and not inside(path, homes):
                        faults.append(f"{path}: <{name}> belongs to {', '.join(homes)}")
                continue
            if not (SRC / name).is_file():
                lists = SRC / folder_of(name) / "CMakeLists.txt"  # The build may write it.
                if not lists.is_file() or not re.search(rf"BINARY_DIR}}/{Path(name).name}\b", lists.read_text()):
                    faults.append(f"{path}: \"{name}\" is no path below src/, and the build writes none")
                    continue
            graph[path].append(name)
            target = folder_of(name)
            if target not in floors:
                continue  # told where its own includes are read
            if target != folder:
                folders.setdefault(folder, set()).add(target)
            if floors[target] > floors[folder]:
                if (folder, target) in exceptions:
                    exceptions[(folder, target)] = True
                else:
                    faults.append(f"{path} (floor {floors[folder]}) includes {name} (floor {floors[target]})")
            for concrete in CONCRETE:
                if name.startswith(concrete + "/") and not inside(path, [concrete, "app", "cli"]):
                    faults.append(f"{path}: only app/ and cli/ may name {concrete}")
    faults += [f"floors.txt: the exception {a} -> {b} is not used any more; remove it"
               for (a, b), used in exceptions.items() if not used]
    for kind, arrows in (("files", graph), ("folders", folders)):
        if cycle := find_cycle(arrows):
            faults.append(f"{kind} include each other in a circle: " + " -> ".join(cycle))
    faults += [f"floors.txt: there is no folder {folder}" for folder in floors if not (SRC / folder).is_dir()]
    print("\n".join(faults) if faults else f"{len(files)} files keep to their floors")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
