"""debian_source_list: which of a machine's archives end up in the private source list, and in what words."""
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "setup" / "debian_source_list"
KEYRING = "/usr/share/keyrings/debian-archive-keyring.gpg"

# Name of the file below the folder of apt, its text, and (URIs, suites) of the expected entries.
CASES = {
    "deb822, several stanzas": ("sources.list.d/debian.sources", f"""\
Types: deb
# http://snapshot.debian.org/archive/debian/20250520T000000Z
URIs: http://deb.debian.org/debian
Suites: bookworm bookworm-updates
Components: main
Signed-By: {KEYRING}

Types: deb
URIs: http://deb.debian.org/debian-security
Suites: bookworm-security
Components: main
Signed-By: {KEYRING}
""", [("http://deb.debian.org/debian", "bookworm")]),
    "deb822, lists over several lines, other case": ("sources.list.d/debian.sources", """\
types: deb deb-src
uris:
 http://mirror.example/debian
 http://ftp.de.debian.org/pub
suites: bookworm
  bookworm-backports
components: main contrib
""", [("http://mirror.example/debian http://ftp.de.debian.org/pub", "bookworm")]),
    "deb822, disabled": ("sources.list.d/debian.sources", """\
Enabled: no
Types: deb
URIs: http://deb.debian.org/debian
Suites: bookworm
Components: main
""", []),
    "deb822, a mirror list of a cloud image": ("sources.list.d/debian.sources", """\
Types: deb
URIs: mirror+file:///etc/apt/mirrors/debian.list
Suites: bookworm
Components: main
""", [("mirror+file:///etc/apt/mirrors/debian.list", "bookworm")]),
    "one line each": ("sources.list", """\
# deb http://deb.debian.org/debian trixie main
deb cdrom:[Debian GNU/Linux 12]/ bookworm main
deb http://deb.debian.org/debian/ bookworm main contrib  # the archive
deb-src http://deb.debian.org/debian bookworm main
deb http://security.debian.org/debian-security bookworm-security main
deb http://deb.debian.org/debian bookworm-updates main
""", [("http://deb.debian.org/debian/", "bookworm")]),
    "one line, own mirror named by its key": ("sources.list.d/house.list",
        f"deb [arch=amd64 signed-by={KEYRING}] https://packages.example/remote stable main\n",
        [("https://packages.example/remote", "stable")]),
    "third parties": ("sources.list.d/others.list", """\
deb https://packages.cloud.google.com/apt cloud-sdk-bookworm main
deb [signed-by=/etc/apt/keyrings/docker.asc] https://download.docker.com/linux/debian bookworm stable
deb [signed-by=/etc/apt/keyrings/winehq.key] https://dl.winehq.org/wine-builds/debian bookworm main
deb [arch=amd64] https://dl.google.com/linux/chrome/deb/ stable main
deb https://debian.org.example/apt bookworm main
""", []),
    "third party, deb822": ("sources.list.d/nodesource.sources", """\
Types: deb
URIs: https://deb.nodesource.com/node_20.x
Suites: nodistro
Components: main
Signed-By: /usr/share/keyrings/nodesource.gpg
""", []),
    "a file that apt does not read": ("sources.list.d/debian.sources.disabled",
        "Types: deb\nURIs: http://deb.debian.org/debian\nSuites: bookworm\nComponents: main\n", []),
}


class SOURCE_LIST(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        (self.folder / "sources.list.d").mkdir()

    def run_script(self):
        return subprocess.run([SCRIPT, self.folder], capture_output=True, text=True)

    def test_entries(self):
        for name, (file, text, expected) in CASES.items():
            with self.subTest(name):
                path = self.folder / file
                path.write_text(text)
                result = self.run_script()
                path.unlink()
                lines = result.stdout.splitlines()
                entries = list(zip((" ".join(line.split(":", 1)[1].split()) for line in self.whole(lines, "Uris")),
                                   (" ".join(line.split(":", 1)[1].split()) for line in self.whole(lines, "Suites"))))
                self.assertEqual(entries, expected)
                self.assertEqual(result.returncode, 0 if expected else 1, result.stderr)
                if not expected:
                    self.assertIn(str(self.folder), result.stderr)

    @staticmethod
    def whole(lines, field):
        return [line for line in lines if line.startswith(field + ":")]

    @unittest.skipUnless(shutil.which("apt-get"), "needs apt")
    def test_apt_reads_it_and_keeps_the_key(self):
        """apt itself is asked, so a field that it does not know or a broken embedded key would show."""
        key = "Signed-By:\n -----BEGIN PGP PUBLIC KEY BLOCK-----\n .\n mDMEZ\n -----END PGP PUBLIC KEY BLOCK-----\n"
        (self.folder / "sources.list.d/debian.sources").write_text(
            "Types: deb\nURIs: http://mirror.example/debian\nSuites: bookworm\nComponents: main\n"
            "Architectures: amd64\nCheck-Valid-Until: no\n" + key)
        (self.folder / "sources.list").write_text(
            f"deb [signed-by={KEYRING} arch=amd64] http://deb.debian.org/debian bookworm main\n")
        text = self.run_script().stdout
        self.assertIn(key, text)
        self.assertIn(f"Signed-By: {KEYRING}\n", text)
        private = self.folder / "private"
        private.mkdir()
        (private / "debian.sources").write_text(text)
        (self.folder / "lists" / "partial").mkdir(parents=True)
        answer = subprocess.run(
            ["apt-get", "update", "--print-uris", "-o", "Dir::Etc::SourceList=/dev/null", "-o",
             f"Dir::Etc::SourceParts={private}", "-o", f"Dir::State::Lists={self.folder}/lists"],
            capture_output=True, text=True, env={**os.environ, "LC_ALL": "C.UTF-8"})
        self.assertEqual(answer.returncode, 0, answer.stderr)
        self.assertEqual(answer.stderr, "")
        addresses = {line.split("'")[1].removesuffix(".xz") for line in answer.stdout.splitlines()}
        self.assertEqual(addresses, {f"http://{host}/debian/dists/bookworm/{file}"
                                     for host in ("deb.debian.org", "mirror.example")
                                     for file in ("InRelease", "main/source/Sources")})


if __name__ == "__main__":
    unittest.main()
