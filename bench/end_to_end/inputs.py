"""What is measured on: real images and the peers' programs, from Debian's and npm's packages. They are fetched once and
unpacked into a cache folder outside the repository; nothing is installed."""

import os
import shutil
import struct
import subprocess
import time
import zipfile
from dataclasses import dataclass
from pathlib import Path

# A user without a home has "~" expanded to itself.
CACHE = Path(os.environ.get("XDG_CACHE_HOME") or os.path.expanduser("~/.cache")) / "zab-bench"


@dataclass(frozen=True)
class TREE:
    """A game's images of one kind."""

    name: str
    package: str
    suffix: str
    images: tuple[Path, ...]
    texels: int

    def described(self):
        return f"`{self.package}`: {len(self.images)} {self.suffix[1:].upper()}, {self.texels / 1e6:.1f} million texels"


SOURCES = {"openarena": ("openarena-data", ".tga"), "extremetuxracer": ("extremetuxracer-data", ".png"),
           "bzflag": ("bzflag-data", ".png")}


def debian_package(name):
    """The folder that a package's files are unpacked in."""
    folder = CACHE / "packages" / name
    if not folder.exists():
        fetched = CACHE / "fetched" / name
        shutil.rmtree(fetched, ignore_errors=True)
        fetched.mkdir(parents=True)
        subprocess.run(["apt-get", "download", "-q", "-o", "APT::Sandbox::User=root", name], cwd=fetched, check=True, stdout=subprocess.DEVNULL)
        [archive] = fetched.glob("*.deb")
        unpacked = fetched / "unpacked"
        subprocess.run(["dpkg", "-x", archive, unpacked], check=True)
        # Game data may stand in archives of its own.
        for inner in unpacked.rglob("*.pk3"):
            zipfile.ZipFile(inner).extractall(inner.with_suffix(""))
        folder.parent.mkdir(parents=True, exist_ok=True)
        unpacked.rename(folder)
        shutil.rmtree(fetched)
    return folder


def npm_package(name):
    folder = CACHE / "packages" / name.replace("/", "_")
    if not folder.exists():
        fetched = CACHE / "fetched" / folder.name
        shutil.rmtree(fetched, ignore_errors=True)
        fetched.mkdir(parents=True)
        subprocess.run(["npm", "pack", "--silent", name], cwd=fetched, check=True, stdout=subprocess.DEVNULL)
        [archive] = fetched.glob("*.tgz")
        shutil.unpack_archive(archive, fetched)
        folder.parent.mkdir(parents=True, exist_ok=True)
        (fetched / "package").rename(folder)
        shutil.rmtree(fetched)
    return folder


def sides(path):
    """Width and height from a TGA's or PNG's header."""
    with open(path, "rb") as file:
        head = file.read(26)
    if path.suffix.lower() == ".tga":
        return struct.unpack("<HH", head[12:16])
    return struct.unpack(">II", head[16:24])


def tree(name, sample=None):
    """A tree of the game's images, as they lie in the game; only those that block compression takes as they are, with
    sides that are multiples of 4. With `sample`, about so many of them, spread evenly over the order of their sizes."""
    package, suffix = SOURCES[name]
    found = []
    taken = set()
    for path in sorted(debian_package(package).rglob("*")):
        if path.suffix.lower() != suffix or path.stat().st_size < 26:
            continue
        width, height = sides(path)
        # Rules and packed maps go by the names of files; without underscores every image is a texture of its own.
        image = path.relative_to(debian_package(package)).with_name(path.stem.replace("_", "-").lower() + suffix)
        if min(width, height) > 0 and width % 4 == height % 4 == 0 and image not in taken:
            taken.add(image)
            found.append((width * height, image, path))
    if sample and sample < len(found):
        found.sort()
        found = [found[(2 * i + 1) * len(found) // (2 * sample)] for i in range(sample)]
    folder = CACHE / "trees" / (f"{name}-{sample}" if sample else name)
    images = []
    for _, name_in_tree, path in found:
        image = folder / name_in_tree
        if not image.exists():
            image.parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(path, image)
        images.append(image)
    for stale in set(folder.rglob("*" + suffix)) - set(images):
        stale.unlink()
    return TREE(name, package, suffix, tuple(sorted(images)), sum(texels for texels, _, _ in found))


def project(tree_of_images, setting, rules):
    """A project that builds the whole tree with these properties of its one rule; its folder."""
    folder = CACHE / "projects" / folder_of(tree_of_images).name / setting
    folder.mkdir(parents=True, exist_ok=True)
    lines = ["[roots]", f'raw = "{folder_of(tree_of_images)}"', "", "[[rule]]", 'name = "Texture"',
             'TargetPath = "{dir}"']
    (folder / "zab.toml").write_text("\n".join(lines + [f"{name} = {value}" for name, value in rules.items()]) + "\n")
    return folder


def put_away(*folders):
    """Makes room for new results, at once: what was there is deleted when everything is measured, since a file system
    may be slow to make files while it still remembers others that were just deleted."""
    trash = CACHE / "trash"
    trash.mkdir(parents=True, exist_ok=True)
    for folder in folders:
        if folder.exists():
            folder.rename(trash / f"{os.getpid()}-{time.monotonic_ns()}")


def empty_trash():
    shutil.rmtree(CACHE / "trash", ignore_errors=True)


def folder_of(tree_of_images):
    trees = CACHE / "trees"
    return trees / tree_of_images.images[0].relative_to(trees).parts[0]
