"""An independent maker and reader of tags. make FOLDER: files of every kind that the tests know; show FOLDER: all that
these hold, as JSON: the version, what each frame or item says, and a digest of the packets as ffmpeg reads them."""
import json
import shutil
import subprocess
import sys
from hashlib import md5
from pathlib import Path

from mutagen.id3 import ID3, ID3NoHeaderError
from mutagen.id3._frames import APIC, COMM, POPM, PRIV, TALB, TCON, TDRC, TIT2, TPE1, TSOP, TXXX
from mutagen.mp4 import MP4, MP4FreeForm


def ffmpeg(*arguments):
    return subprocess.run(["ffmpeg", "-v", "error", "-y", *map(str, arguments)], check=True, capture_output=True).stdout


def make(folder):
    tone = ["-f", "lavfi", "-i", "sine=d=2", "-map_metadata", "-1", "-fflags", "+bitexact"]
    plain, picture = folder / "none.mp3", folder / "picture.png"
    ffmpeg(*tone, "-id3v2_version", 0, "-write_xing", 0, plain)
    ffmpeg("-f", "lavfi", "-i", "testsrc=s=1000x750:d=0.1", "-frames:v", 1, picture)
    for version in (3, 4):
        file = folder / f"v2{version}.mp3"
        shutil.copy(plain, file)
        tag = ID3()
        for frame in (TIT2(3, "Old"), TPE1(3, ["One", "Two"]), TALB(3, "Album"), TDRC(3, "2009-05-01"),
                      TCON(3, "(17)My Rock"), TXXX(3, "key", "value"), PRIV("owner", b"\0\1\xff\0"), TSOP(3, "sorted"),
                      COMM(3, "eng", "", "a comment"), POPM("somebody", 5, 7), PRIV("large", bytes(300_000)),
                      APIC(0, "image/png", 4, "back", picture.read_bytes()),
                      APIC(0, "image/png", 3, "front", picture.read_bytes())):
            tag.add(frame)
        tag.save(file, v2_version=version, v1=2 if version == 3 else 0)
    huge = folder / "huge.bmp"  # ten megabytes
    ffmpeg("-f", "lavfi", "-i", "testsrc=s=2000x1750:d=0.1", "-frames:v", 1, huge)
    shutil.copy(plain, folder / "huge.mp3")
    tag = ID3()
    tag.add(APIC(0, "image/bmp", 3, "", huge.read_bytes()))
    tag.save(folder / "huge.mp3", v2_version=3)

    def framed(head, frames):
        size = sum(map(len, frames))
        return head + bytes(size >> shift & 127 for shift in (21, 14, 7, 0)) + b"".join(frames) + plain.read_bytes()
    text = b"\0" + b"A title that is longer than 127 letters " * 4
    oldest = {b"TT2": b"\0Old", b"TCM": b"\0Bach", b"TYE": b"\x002009", b"TDA": b"\x000105", b"TRD": b"\0June", b"TOA": b"\0He",
              b"PIC": b"\0PNG\3\0" + picture.read_bytes()}
    (folder / "v22.mp3").write_bytes(framed(b"ID3\2\0\0", [name + len(content).to_bytes(3, "big") + content
                                                          for name, content in oldest.items()]))
    # Version 4 with the plain sizes of version 3, and version 3 with the marks that keep old players from its bytes.
    (folder / "plain_sizes.mp3").write_bytes(framed(b"ID3\4\0\0", [b"TIT2" + len(text).to_bytes(4, "big") + b"\0\0" + text,
                                                                   b"TCOM\0\0\0\5\0\0\0Bach"]))
    (folder / "unsafe.mp3").write_bytes(framed(b"ID3\3\0\x80", [b"TIT2\0\0\0\4\0\0\0Old", b"PRIV\0\0\0\4\0\0o\0\xff\0\xfb"]))
    # Version 4 with these marks, said of the whole tag.
    (folder / "unsafe_tag.mp3").write_bytes(framed(b"ID3\4\0\x80", [b"TIT2\0\0\0\4\0\0\0Old",
                                                                   b"PRIV\0\0\0\5\0\0o\0\xff\0\xfb"]))
    (folder / "v1.mp3").write_bytes(plain.read_bytes() + b"TAG" + b"Old".ljust(30, b"\0") + b"One".ljust(30, b"\0")
                                    + b"Album".ljust(30, b"\0") + b"2009" + b"comment".ljust(30, b"\0") + b"\x11")

    ffmpeg(*tone, folder / "none.m4a")
    ffmpeg(*tone, "-metadata", "title=Old", "-metadata", "date=2009-05-01", folder / "end.m4a")
    ffmpeg("-i", folder / "none.m4a", "-i", picture, "-map", 0, "-map", 1, "-c", "copy", "-disposition:v", "attached_pic",
           "-metadata", "title=Old", "-movflags", "+faststart", folder / "front.m4a")
    movie = MP4(folder / "front.m4a")
    movie["----:com.apple.iTunes:MOOD"] = [MP4FreeForm(b"\1\2", dataformat=0)]
    movie["trkn"], movie["cpil"], movie["tmpo"] = [(1, 2)], True, [120]
    movie.save()
    # An item that no library knows.
    item = b"\0\0\0\x1cabcd\0\0\0\x14data\0\0\0\x15\0\0\0\0\1\2\3\4"
    (folder / "foreign.m4a").write_bytes(with_item((folder / "end.m4a").read_bytes(), item))
    for name, flags in (("fragments", "+default_base_moof"), ("old_fragments", "")):
        ffmpeg(*tone, "-movflags", "+frag_keyframe+empty_moov" + flags, "-frag_duration", 500_000, folder / f"{name}.m4a")


def with_item(movie, item):
    """Behind the last of a movie that ends with its list of items."""
    movie = bytearray(movie)
    for box in (b"moov", b"udta", b"meta", b"ilst"):
        at = movie.rindex(box) - 4
        size = int.from_bytes(movie[at:at + 4], "big")
        assert at + size == len(movie)
        movie[at:at + 4] = (size + len(item)).to_bytes(4, "big")
    return movie + item


def show(file):
    held = {"sound": ffmpeg("-i", file, "-map", "0:a", "-c", "copy", "-f", "md5", "-").decode()}
    if file.suffix == ".m4a":
        tags = MP4(file).tags or {}
        held |= {key: str(value) for key, value in tags.items()}
        held |= {f"{key} unknown": str(value) for key, value in getattr(tags, "_failed_atoms", {}).items()}
        held["version"] = "M4A"
    else:
        try:
            tag = ID3(file, translate=False, load_v1=False)
            held |= {key: repr(frame) if key[:4] != "APIC" else f"{frame.mime} {int(frame.type)} {frame.data[:4]}"
                     for key, frame in tag.items()}
            held["version"] = f"2.{tag.version[1]}"
        except ID3NoHeaderError:
            held["version"] = "none"
        end = file.read_bytes()[-128:]
        held["v1"] = end.decode("latin1") if end.startswith(b"TAG") else "none"
    return {key: text if len(text) < 500 else md5(text.encode()).hexdigest() for key, text in held.items()}


if __name__ == "__main__":
    what, folder = sys.argv[1], Path(sys.argv[2])
    if what == "make":
        make(folder)
    else:
        print(json.dumps({file.name: show(file) for file in folder.glob("*.m*")}))
