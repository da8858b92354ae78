#!/usr/bin/env python3
"""Cheap checks of the tree: test sources in targets, paths in documents, sizes, sleeping tests, bare releases,
texts, subjects of commits."""
import re
import shutil
import subprocess
import sys
from pathlib import Path
from xml.etree import ElementTree

ROOT = Path(__file__).resolve().parents[2]


def sources(*folders):
    return [p for f in folders for p in sorted((ROOT / f).rglob("*")) if p.suffix in (".h", ".cpp")]


def test_targets():
    """A test source that no target builds is no test."""
    for folder in ("src", "tests", "bench"):
        for file in (ROOT / folder).rglob("*.cpp"):
            lists = file.parent / "CMakeLists.txt"
            parent = file.parent.parent / "CMakeLists.txt"
            texts = [p.read_text() for p in (lists, parent) if p.is_file()]
            if not any(re.search(rf"\b{re.escape(file.name)}\b|\b{re.escape(file.stem)}\b", t) for t in texts):
                yield f"{file.relative_to(ROOT)}: no CMakeLists.txt beside it names it"


def own_header():
    """A source includes its own header first, which shows that the header compiles alone."""
    for file in sources("src"):
        own = file.with_suffix(".h")
        if file.suffix == ".cpp" and own.exists():
            first = re.search(r'^#include [<"](.*)[>"]', file.read_text(), re.M)
            if not first or first[1] != str(own.relative_to(ROOT / "src")):
                yield f"{file.relative_to(ROOT)}: does not include its own header first"


def doc_paths():
    """Every path that a document names exists."""
    for doc in [*ROOT.glob("*.md"), *(ROOT / "docs").rglob("*.md")]:
        for path in re.findall(r"`((?:src|tests|scripts|docs|bench|resources|cmake|packaging)/[\w./-]+)`", doc.read_text()):
            if not (ROOT / path).exists():
                yield f"{doc.relative_to(ROOT)}: {path} does not exist"


def sizes():
    """Files over 800 lines are refused."""
    for file in sources("src", "tests", "bench"):
        lines = file.read_text().count("\n")
        if lines > 800:
            yield f"{file.relative_to(ROOT)}: {lines} lines; 800 is the limit"


def no_sleeping():
    """Fast tests wait on conditions with a deadline or step a manual clock."""
    for file in sources("tests/unit", "tests/contract"):
        if re.search(r"\b(sleep_for|usleep|QTest::qWait|QThread::m?sleep)\b", file.read_text()):
            yield f"{file.relative_to(ROOT)}: sleeps"


def colours():
    """Colours stand in the tokens only."""
    pattern = re.compile(r"#[0-9A-Fa-f]{6}\b|\bQColor\((?:0x|\d)|\bQt::(?:white|black|\w*(?:[rR]ed|[gG]reen|[bB]lue|[gG]r[ae]y|[yY]ellow))\b|setStyleSheet")
    for file in sources("src/ui"):
        for number, line in enumerate(file.read_text().splitlines(), 1):
            if file.stem != "Tokens" and pattern.search(line):
                yield f"{file.relative_to(ROOT)}:{number}: names a colour that is no token"


def handles():
    """C handles are released by their alias in a Handles.h header only."""
    pattern = re.compile(r"\b(av_\w+_free|avcodec_free_context|avformat_free_context|pw_\w+_destroy|plist_free|"
                         r"pw_core_disconnect|avformat_close_input)\s*\(")
    for file in sources("src"):
        if "Handles" not in file.name and pattern.search(file.read_text()):
            yield f"{file.relative_to(ROOT)}: releases a C handle by hand"


def subjects():
    """The subjects of commits since this one have at most 72 columns; of a shallow clone, that of the newest."""
    def git(*arguments):
        return subprocess.run(["git", "-C", ROOT, *arguments], capture_output=True, text=True)
    since = "6e2009ef562b8a795c113745ef67c9e226700e4b"
    if not shutil.which("git") or git("rev-parse", "HEAD").returncode:
        return
    known = git("merge-base", "--is-ancestor", since, "HEAD").returncode == 0
    for line in git("log", "--no-merges", "--format=%h %s", *([f"{since}..HEAD"] if known else ["-1"])).stdout.splitlines():
        commit, subject = line.split(" ", 1)
        if len(subject) > 72:
            yield f"{commit}: the subject has {len(subject)} columns; 72 is the limit"


def texts():
    """A text of the windows is shown by one; a sentence is said by its key, with what its markers ask for, and each one
    by somebody; and all language files have the same texts."""
    english = ElementTree.parse(ROOT / "resources/lang/English.xml").getroot()
    sentences = {key: set(re.findall(r"\[#(\w+)#\]", text)) for key, text in english.find("sentence").items()}
    code = {file: file.read_text() for file in sources("src")}
    shown = {key for text in code.values() for key in re.findall(r"Lang::window(\w+)", text)}
    for key in {key.split(".")[0] for key in english.find("window").keys()} - shown:
        yield f"English.xml: no window shows {key}"
    said = set()
    for file, text in code.items():
        for constant, literals in re.findall(r"SentenceKey\s+(k\w+)\(([^)]*)\);", text):
            key, *markers = re.findall(r'"(\w+)"', literals)
            if sentences.get(key) != set(markers):
                yield f"{file.relative_to(ROOT)}: English.xml has no sentence {key} with {markers}"
            places = code.values() if file.suffix == ".h" else [text]
            if any(re.search(rf"(?<!SentenceKey )\b{constant}\(", place) for place in places):
                said.add(key)
    for key in sentences.keys() - said:
        yield f"English.xml: nobody says {key}"
    def names(root):
        return {(element.tag, name) for element in root.iter() for name in element.keys() if "." not in name}
    for file in sorted((ROOT / "resources/lang").glob("*.xml")):
        root = ElementTree.parse(file).getroot()
        for element, name in names(english) ^ names(root):
            yield f"{file.name}: {element} {name} stands in one of this and English.xml only"


CHECKS = {check.__name__: check for check in (test_targets, own_header, doc_paths, sizes, no_sleeping, colours, handles, subjects, texts)}

if __name__ == "__main__":
    chosen = sys.argv[1:] or list(CHECKS)
    faults = [fault for name in chosen for fault in CHECKS[name]()]
    print("\n".join(faults) if faults else "nothing found")
    sys.exit(1 if faults else 0)
