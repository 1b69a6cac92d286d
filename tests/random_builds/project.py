"""A project of random sources and rules, and the edits that people, programs and accidents do to it: all that happens to
the files before a build looks at them. What the edits did to the working folder is kept in mind here, since it is not the
tool's to touch; the raw folder is simply read before and after."""

import json
import os
import pathlib
import shutil
import struct
import zlib

FRAGMENT = ".texture_array.agf"


def texels(rng, width, height, channels):
    data = bytearray(rng.randbytes(width * height * channels) if rng.random() < 0.7 else bytes([rng.randrange(256)]) *
                     (width * height * channels))
    if channels == 4 and rng.random() < 0.5:
        data[3::4] = b"\xff" * (width * height)
    return bytes(data)


def tga(rng, width, height):
    channels = rng.choice((1, 3, 4))
    return struct.pack("<BBBHHBHHHHBB", 0, 0, 3 if channels == 1 else 2, 0, 0, 0, 0, 0, width, height, 8 * channels,
                       8 if channels == 4 else 0) + texels(rng, width, height, channels)


def png(rng, width, height):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    rows = b"".join(b"\0" + texels(rng, width, 1, 4) for _ in range(height))
    header = struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows, 1)) + chunk(b"IEND", b"")


def dds(rng, width, height):
    return (struct.pack("<4s7I44x", b"DDS ", 124, 0x1007, height, width, 0, 0, 0)
            + struct.pack("<8I", 32, 0x41, 0, 32, 0xFF0000, 0xFF00, 0xFF, 0xFF000000)
            + struct.pack("<5I", 0x1000, 0, 0, 0, 0) + texels(rng, width, height, 4))


def tif(rng, width, height):
    entries = [(256, 4, width), (257, 4, height), (258, 3, 8), (259, 3, 1), (262, 3, 1), (273, 4, 134), (277, 3, 1),
               (278, 4, height), (279, 4, width * height), (296, 3, 1)]
    table = b"".join(struct.pack("<HHII", tag, kind, 1, value) for tag, kind, value in entries)
    return struct.pack("<2sHIH", b"II", 42, 8, len(entries)) + table + b"\0" * 4 + texels(rng, width, height, 1)


def fga(rng, *_):
    sides = [rng.randint(2, 4) for _ in range(3)]
    count = 6 + 3 * sides[0] * sides[1] * sides[2] - (rng.random() < 0.1)
    return ",".join([*map(str, sides), *(f"{rng.uniform(-9, 9):.3f}" for _ in range(count))]).encode() + b","


def names_of_textures(rng, *_):
    names = ("textures/rock", "textures/a/wall", "textures/a/leaf", "textures/sky", "textures/cape_mask", "textures/own",
             "textures/a/b/iron_gloss_map", "textures/old/rock", "atlases/ui0", "atlases/ui1", "other/rock")
    return "".join(f"{name}\n" for name in rng.choices(names, k=rng.randrange(6))).encode()


MAKERS = {"tga": tga, "png": png, "dds": dds, "tif": tif, "fga": fga, "texture_array": names_of_textures,
          "agf": lambda rng, *_: b"<old/>", "txt": lambda rng, *_: rng.randbytes(9)}
NAMES = """rock.tga wall.tga rock_normal.tga tür_1.tga leaf.png sky.dds plain.tif wind.fga BIG.TGA note.txt set.texture_array
set2.texture_array set.agf cape_mask1.tga cape_mask2.tga cape_mask3.tga cape_mask4.tga flag_colormask.tga flag_colormask2.tga
flag_colormask3.tga flag_colormask4.tga iron_gloss.tga iron_level.tga iron_factionmask.tga iron_gloss_map.tga
steel_smoothness.tga steel_metalness.tga steel_factionmask.tga bone_curvature.tga bone_translucency.tga
bush_billboard_normal.tga bush_billboard_displacement.tga vale_flow.tif vale_wear.tif vale_deposition.tif"""
NAMES = [*NAMES.split(), "br ick.tga"]
FOLDERS = ["", "", "a", "a", "a/b", "old", "old/x", "ui", "ui", "ui/more"]
PROPERTIES = {
    "Texture": {
        "CompressionFormat": ["dxt1", "dxt3", "dxt5", "dxt1_or_dxt5", "dxt1_or_dxt1a", "dxt5n", "rgba", "rgb", "l8", "bc5n",
                              "bc7", "bc6", "nonsense"],
        "Compressor": ["nvidia", "ati", "ati", "none"], "Mipmaps": [True, False], "NormalMap": [True], "ParallaxMap": [True],
        "NeedGammaCorrection": [True, False], "PremultipliedAlpha": [True], "DropMips": [0, 1, 2, "x"], "MaxSize": [4, 8, 16],
        "MipMapFilterType": ["kaiser"], "MipmMapFilterType": ["kaiser", "triangle"], "AverageGrey": [0.1, float("nan")],
        "UseHighQualityOneBitAlphaFiltering": [True], "ExportExtraAlphaBlendTexture": [True, False],
        "ExtraAlphaBlendCompressionFormat": ["dxt5", "rgba"], "FastestCompressionQuality": [True, True, True, False],
        "TargetPath": ["textures/{dir}", "other/{dir}", "{dir}", "t/{dir}/{name}", "../outside"],
        "Format": ["dds", "jpg", "png", "tga", "bmp"]},
    "TextureOld": {"TargetPath": ["textures/{dir}", "was/{dir}"], "ForbidDXT1": [True, "1", False], "Format": ["dds", "png"]},
    "Atlas": {"TargetBaseName": ["atlases/{dir}", "atlases/ui", "t/{dir}/"], "Width": [16, 32, 64], "Height": [16, 64, 0]},
    "TextureLevelling": {"InputMin": [-1, 0, 9], "InputMax": [-1, 200], "OutputMin": [3], "OutputMax": [100, 2]},
    "Expansion": {"Name": ["", "north", "south"], "Released": [True, False]}}
PATTERNS = ["*.tga", "/*.tga", "*_mask?.tga", "rock*", "!wall.tga", "a/", "*", "*.png", "*.dds", "cape_*", "*.tif", "*.fga"]
BASE_RULES = [
    ("Texture", {"match": ["*", "!/old/"], "TargetPath": "textures/{dir}", "FastestCompressionQuality": True}),
    ("TextureOld", {"match": ["/old/"], "TargetPath": "textures/{dir}"}),
    ("Atlas", {"match": ["/ui/"], "TargetBaseName": "atlases/{dir}", "Width": 64, "Height": 32})]


def what_is(path):
    return b"-> " + os.fsencode(os.readlink(path)) if path.is_symlink() else path.read_bytes()


def toml_value(value):
    return str(value) if isinstance(value, float) else json.dumps(value)      # JSON knows no nan


class Project:
    """`folder` holds the project beside what it must not touch: files that links point to, and snapshots of targets."""

    def __init__(self, folder, rng, without):
        self.folder, self.rng = pathlib.Path(folder), rng
        self.path = self.folder / "project"
        self.raw, self.working = self.path / "raw_data", self.path / "working_data"
        self.own = {}               # of the working folder and of fragments: what the edits made, and nobody may change
        self.loose = set()          # of which nobody can tell whose they are
        self.left_by_kill = set()   # in the raw folder, until the next build
        self.side = rng.choice((8, 16, 32))
        self.rules = {"": [(name, dict(values)) for name, values in BASE_RULES]}
        self.raw.mkdir(parents=True)
        (self.folder / "victims/images").mkdir(parents=True)
        (self.folder / "snapshots").mkdir()
        for name in ("victim.tga", "images/rock.tga", "images/leaf.png"):
            (self.folder / "victims" / name).write_bytes(MAKERS[name[-3:]](rng, self.side, self.side))
        self.without = set(without) | self.links_impossible()
        self.edits = {name[5:]: getattr(self, name) for name in sorted(dir(self))
                      if name.startswith("edit_") and name[5:] not in self.without}
        self.names = [name for name in NAMES if name.split(".")[1] not in self.without]
        for _ in range(rng.randint(10, 25)):
            self.edit_add()
        self.edit_tables()
        self.write_rules("")

    def links_impossible(self):
        try:
            (self.folder / "probe").symlink_to("x")
            (self.folder / "probe").unlink()
            return set()
        except OSError:
            return {name[5:] for name in dir(self) if "link" in name} | {"folder_link", "snapshot", "restore"}

    # What there is

    def files(self, root, chosen=lambda name: True):
        found = [os.path.join(folder, name) for folder, _, names in os.walk(root) for name in names]
        return sorted(path for path in map(pathlib.Path, found) if chosen(path.name) and str(path) not in self.left_by_kill)

    def sources(self):
        return self.files(self.raw, lambda name: name != "zab_rules.toml" and not name.endswith(FRAGMENT))

    def targets(self):
        return self.files(self.working) + self.files(self.raw, lambda name: name.endswith(FRAGMENT))

    def one(self, paths, regular=True):
        paths = [path for path in paths if not regular or path.is_file() and not path.is_symlink()]
        return self.rng.choice(paths) if paths else None

    def contents(self, path):
        side = (self.side, self.side) if self.rng.random() < 0.9 else self.rng.choices((8, 12, 16, 24, 64, 7), k=2)
        data = MAKERS.get(path.suffix[1:], tga)(self.rng, *side)
        return data if self.rng.random() < 0.96 else self.rng.choice((b"", data[:len(data) // 2], self.rng.randbytes(50)))

    # How files come to be

    def note(self, path):
        """After an edit of what is not a source: what stands there is the edit's own from here on."""
        if path.is_relative_to(self.working) or path.name.endswith(FRAGMENT):
            name = str(path.relative_to(self.path))
            self.loose.discard(name)
            self.own.pop(name, None)
            if os.path.lexists(path):
                self.own[name] = what_is(path)

    def put(self, path, data):
        """As most programs save, a new file takes the place of the old one; or it is written over, as others do."""
        path.parent.mkdir(parents=True, exist_ok=True)
        if path.is_file() and not path.is_symlink() and path.stat().st_nlink == 1 and self.rng.random() < 0.5:
            path.write_bytes(data)
        else:
            (self.folder / "saving").write_bytes(data)
            os.replace(self.folder / "saving", path)
        self.left_by_kill.discard(str(path))
        self.note(path)
        return path

    def put_unseen(self, path):
        """Other bytes, of the same number and with the same time, as some copying programs leave them."""
        data, stamp = bytearray(path.read_bytes() or b"."), path.stat()
        data[-1 - self.rng.randrange(min(len(data), 30))] ^= self.rng.randrange(1, 256)
        self.put(path, bytes(data))
        os.utime(path, ns=(stamp.st_atime_ns, stamp.st_mtime_ns))

    def place(self):
        return self.raw / self.rng.choice(FOLDERS) / self.rng.choice(self.names)

    # Edits of sources: each returns what it did, or None where it found nothing to do

    def edit_add(self):
        path = self.place()
        return None if path.is_dir() else self.put(path, self.contents(path))

    def edit_change(self):
        if path := self.one(self.sources()):
            self.put(path, path.read_bytes() if self.rng.random() < 0.2 else self.contents(path))
            return path

    def edit_unseen(self):
        if path := self.one(self.sources()):
            self.put_unseen(path)
            return path

    def edit_remove(self):
        folder = self.raw / self.rng.choice(FOLDERS[2:])
        if self.rng.random() < 0.1 and folder.is_dir():
            self.own = {name: data for name, data in self.own.items() if not (self.path / name).is_relative_to(folder)}
            shutil.rmtree(folder)
            return folder
        if path := self.one(self.sources(), regular=False):
            path.unlink()
            return path

    def edit_rename(self):
        one, other = self.one(self.sources(), regular=False), self.place()
        if one and one.suffix == other.suffix and one != other and not other.is_dir():
            other.parent.mkdir(parents=True, exist_ok=True)
            swap = os.path.lexists(other)
            if swap:
                other.rename(self.folder / "saving")
            one.rename(other)
            if swap:
                (self.folder / "saving").rename(one)
            return f"{one} to {other}{', which becomes the former' * swap}"

    # Edits of rules and tables

    def write_rules(self, folder, mistake=""):
        text = "" if folder else (f'[tables]\ntexc_expansions = "db/expansions.xml"\n[global]\nRetail = '
                                  f'{toml_value(self.retail)}\n[image_database]\nenabled = {toml_value(self.database)}\n')
        for name, values in self.rules[folder]:
            text += f'[[rule]]\nname = "{name}"\n' + "".join(f"{key} = {toml_value(value)}\n" for key, value in values.items())
        self.put(self.raw / folder / "zab_rules.toml" if folder else self.path / "zab.toml", (text + mistake).encode())

    def edit_rule(self):
        folder = self.rng.choice(("", ".", "a", "a/b", "old", "ui"))
        rules = self.rules.setdefault(folder, [])
        fixed = len(BASE_RULES) if not folder else 0
        if len(rules) > fixed and self.rng.random() < 0.5:
            del rules[self.rng.randrange(fixed, len(rules))]
        elif rules and self.rng.random() < 0.3:
            name, values = self.rng.choice(rules)
            values.update(self.some_properties(name))
        else:
            name = self.rng.choices(list(PROPERTIES), (6, 2, 1, 1, 2))[0]
            rules.append((name, {"match": self.rng.sample(PATTERNS, self.rng.randint(1, 3)), **self.some_properties(name)}))
        self.write_rules(folder, "[[rule\n" if self.rng.random() < 0.02 else "")
        return f"{folder or 'zab.toml'}: {rules}"

    def some_properties(self, name):
        keys = self.rng.sample(list(PROPERTIES[name]), min(len(PROPERTIES[name]), self.rng.randint(1, 3)))
        values = {key: self.rng.choice(PROPERTIES[name][key]) for key in keys}
        return {key: value for key, value in values.items() if value == value or "nan" not in self.without}

    def edit_tables(self):
        self.retail, self.database = self.rng.random() < 0.4, self.rng.random() < 0.5
        self.write_rules("")
        rows = [f'<row name="{name}" pack_filename_extension="{self.rng.choice((name, "pack"))}"/>'
                for name in ("north", "south") if self.rng.random() < 0.9]
        self.put(self.path / "db/expansions.xml", f"<table>{''.join(rows)}</table>".encode())
        return f"retail {self.retail}, database {self.database}, {rows}"

    # Edits of targets and of the build state, and files of others among them

    def edit_target(self):
        if path := self.one(self.targets()):
            what = self.rng.choice(("remove", "unseen", "touch", "cut", "copy"))
            if what == "remove":
                path.unlink()
                self.note(path)
            elif what == "unseen":
                self.put_unseen(path)
            elif what == "touch":
                os.utime(path)
            elif what == "cut":
                self.put(path, path.read_bytes()[:-1])
            else:       # the same bytes in another file; not the edit's own
                shutil.copy(path, self.folder / "saving")
                os.replace(self.folder / "saving", path)
            if path.stem[-1:].isdigit():    # a page: an atlas that shrinks removes it, whoever changed it
                self.loose.add(str(path.relative_to(self.path)))
            return f"{what} {path}"

    def beside_target(self, *names):
        path = self.one(self.files(self.working)) or self.working / "x.dds"
        path = path.with_name(self.rng.choice(names).format(path.name))
        return None if path.is_dir() else self.put(path, self.rng.choice((b"mine", dds(self.rng, 4, 4))))

    def edit_foreign(self):
        return self.beside_target("own.dds", "own.txt", "rock.dds", "leaf_ab.dds", "{}~", "{}.tmp", ".{}", "img_db.bin.tmp")

    def edit_part_file(self):
        """Named as a target is while it is being written."""
        return self.beside_target("{}.part")

    def edit_atlas_neighbour(self):
        """Named as a further page of an atlas would be."""
        if (self.working / "atlases").is_dir() and self.rng.random() < 0.2:
            return self.put(self.working / f"atlases/ui{self.rng.randint(1, 3)}.dds", dds(self.rng, 8, 8))

    def edit_work_file(self):
        """A DDS of the artist's beside its TGA, where an older conversion would make its own; most of all where an earlier
        build was killed over it."""
        running = self.path / ".zab/running"
        journal = running.read_bytes() if running.is_file() else b""
        paths = [path.with_suffix(".dds") for path in self.files(self.raw / "old", lambda name: name.endswith(".tga"))]
        path = self.one([path for path in paths if os.fsencode(path) in journal] or paths, regular=False)
        if path:
            return self.put(path.with_suffix(self.rng.choice((".dds", ".dds.part"))), dds(self.rng, 4, 4))

    def edit_state(self):
        what = self.rng.choice((".zab", ".zab/state.db", "working_data", "damage", *[""] * 16))
        if what == "damage" and (self.path / ".zab/state.db").is_file():
            (self.path / ".zab/state.db").write_bytes(b"not a database")
        elif what == ".zab/state.db":
            (self.path / what).unlink(missing_ok=True)
        elif what and what != "damage":
            shutil.rmtree(self.path / what, ignore_errors=True)
        self.own = {name: data for name, data in self.own.items() if os.path.lexists(self.path / name)}
        if what:
            self.loose |= {str(path.relative_to(self.path)) for path in self.targets()}
            return what

    # Links: of sources, of folders, of targets; nothing behind them may change

    def link(self, path, others):
        """`others` are files, or names as they are to stand in a link."""
        to = self.rng.choice([other for other in others if other and other != path])
        path.unlink(missing_ok=True)
        if isinstance(to, pathlib.Path) and to.is_file() and not to.is_symlink() and self.rng.random() < 0.5:
            os.link(to, path)
        else:       # relative, so that a copy of the project has it too
            path.symlink_to(to if isinstance(to, str) else os.path.relpath(to, path.parent))
        self.note(path)
        return f"{path} to {to}"

    def edit_link_source(self):
        path = self.place()
        if path.parent.is_dir() and path.suffix != ".texture_array":
            return self.link(path, (self.one(self.sources()), self.folder / "victims/victim.tga", "nowhere"))

    def edit_link_folder(self):
        path = self.raw / self.rng.choice(("l", "a/l"))
        if path.is_symlink():
            path.unlink()
            return f"no {path}"
        if path.parent.is_dir() and self.rng.random() < 0.3:
            return self.link(path, (self.raw / "a", self.raw, self.folder / "victims/images"))

    def edit_link_target(self):
        if path := self.one(self.files(self.working)):
            return self.link(path, (self.one(self.sources()), self.one(self.files(self.working)), "nowhere",
                                    self.folder / "victims/victim.tga", str(self.folder / "victims/created")))

    def edit_link_fragment(self):
        if path := self.one(self.files(self.raw, lambda name: name.endswith(".texture_array"))):
            return self.link(path.with_name(path.name + ".agf"), (self.one(self.sources()), self.folder / "victims/victim.tga",
                                                                  str(self.folder / "victims/created")))

    def edit_snapshot(self):
        """cp -al: as backups and de-duplicating programs leave it."""
        shutil.rmtree(self.folder / "snapshots/s", ignore_errors=True)
        if self.working.is_dir():
            shutil.copytree(self.working, self.folder / "snapshots/s", symlinks=True, copy_function=os.link)
            return "snapshots/s"

    def edit_restore(self):
        """What a backup had, with its old times."""
        if backup := self.one(self.files(self.folder / "snapshots")):
            path = self.working / backup.relative_to(self.folder / "snapshots/s")
            if path.parent.is_dir() and not path.is_dir():
                path.unlink(missing_ok=True)
                shutil.copy2(backup, path)
                self.note(path)
                self.loose.add(str(path.relative_to(self.path)))
                return path
