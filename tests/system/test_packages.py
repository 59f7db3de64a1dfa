"""What the makers' packages promise, as far as it can be seen without building them."""

import hashlib
import json
import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

import yaml
from router_sandbox import BUILD, PROJECT, Router

PACKAGING = PROJECT / "packaging"
LICENCE = (PROJECT / "LICENSE").read_bytes()


def version():
    return said(PROJECT / "scripts/version")


def said(*words):
    return subprocess.run([str(word) for word in words], check=True, capture_output=True,
                          text=True).stdout.strip()


def text_of(*pattern):
    paths = sorted(PACKAGING.glob("/".join(pattern)))
    if len(paths) != 1:
        raise AssertionError(f"{len(paths)} files are {pattern}")
    return paths[0].read_text()


class Version(unittest.TestCase):
    """scripts/version in a copy of the places that it knows."""

    def setUp(self):
        self.copy = Path(self.enterContext(tempfile.TemporaryDirectory())) / "copy"
        for name in ("src/support", "man", "packaging", "tests/system", "tests/scenarios",
                     "gear/sandbox", "scripts", "CHANGELOG.md"):
            (shutil.copytree if (PROJECT / name).is_dir() else self.copy_file)(
                PROJECT / name, self.copy / name)

    def enterContext(self, manager):
        self.addCleanup(manager.__exit__, None, None, None)
        return manager.__enter__()

    @staticmethod
    def copy_file(source, target):
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(source, target)

    def run_there(self, *words):
        return subprocess.run([self.copy / "scripts/version", *words], capture_output=True,
                              text=True, check=False)

    def test_every_place_agrees(self):
        result = subprocess.run([PROJECT / "scripts/version", "--check"], capture_output=True,
                                text=True, check=False)
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_a_place_that_disagrees_is_named(self):
        number = version()
        for name in ("man/modemd.8", "man/modem-sim.1", "CHANGELOG.md",
                     "packaging/debian/changelog", "packaging/openwrt/Makefile",
                     "packaging/buildroot/package/modemd/modemd.mk",
                     "tests/scenarios/core/startup_test.cpp",
                     "gear/sandbox/supervised_router.py"):
            path = self.copy / name
            right = path.read_text()
            path.write_text(right.replace(number, "0.7", 1))
            result = self.run_there("--check")
            self.assertEqual(result.returncode, 1, name)
            self.assertEqual(result.stderr, f"{name}: 0.7, not {number}\n")
            path.write_text(right)

    def test_nobody_waits_for_a_version_that_is_not_looked_after(self):
        line = f"v{version()} starting"
        left = {path for folder in ("tests/scenarios", "tests/system", "gear", "src")
                for path in (PROJECT / folder).rglob("*")
                if path.is_file() and path.suffix != ".pyc" and line.encode() in path.read_bytes()}
        patterns = re.search(r"^QUOTES = \((.*)\)$", (PROJECT / "scripts/version").read_text(),
                             re.MULTILINE)[1]
        known = {path for pattern in re.findall(r'"(.+?)"', patterns)
                 for path in PROJECT.glob(pattern)}
        self.assertTrue(left)
        self.assertEqual(left - known, set())

    def test_a_new_version_is_written_everywhere(self):
        result = self.run_there("7.8.9")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertEqual(self.run_there().stdout, "7.8.9\n")
        self.assertIn("## Unreleased\n\n## 7.8.9 - ", (self.copy / "CHANGELOG.md").read_text())
        self.assertIn(f"\n## {version()} - ", (self.copy / "CHANGELOG.md").read_text())
        log = said("dpkg-parsechangelog", "-l", self.copy / "packaging/debian/changelog")
        self.assertIn("\nVersion: 7.8.9\n", log)


class Programs(unittest.TestCase):
    def test_the_tools_tell_their_version(self):
        for program in ("modemctl", "modem-sim"):
            self.assertEqual(said(BUILD / program, "--version"), f"{program} {version()}")

    def test_the_daemon_has_its_version_inside_and_takes_no_option_for_it(self):
        """Why a package's test looks into the program instead of starting it."""
        self.assertIn(version().encode() + b"\0", (BUILD / "modemd").read_bytes())
        with Router() as router:
            output = router.shell(f"{BUILD}/modemd --version 2>&1; echo status=$?")
        self.assertIn("usage: modemd ", output)
        self.assertNotIn(version(), output)
        self.assertIn("status=1", output)


class SourceArchive(unittest.TestCase):
    def pack(self, tree, archive, **environment):
        subprocess.run(["bash", "-c", 'umask "$1"; "$2" --source "$3"', "sh",
                        environment.pop("umask", "022"), tree / "scripts/release", archive],
                       check=True, capture_output=True,
                       env={"PATH": "/usr/bin:/bin", "HOME": "/", **environment})
        return hashlib.sha256(archive.read_bytes()).hexdigest()

    def test_packed_again_elsewhere_and_without_git_it_has_the_same_bytes(self):
        with tempfile.TemporaryDirectory() as folder:
            folder = Path(folder)
            first = self.pack(PROJECT, folder / "1.tar.gz", TZ="UTC", LC_ALL="C")
            said("git", "init", "--quiet", folder)  # unpacked inside of somebody's project
            subprocess.run(["tar", "-xzf", folder / "1.tar.gz", "-C", folder], check=True)
            tree = folder / f"modemd-{version()}"
            self.assertTrue((tree / "src/core/main.cpp").is_file())
            self.assertFalse((tree / ".git").exists())
            again = self.pack(tree, folder / "2.tar.gz", TZ="Asia/Kathmandu", LC_ALL="C.UTF-8",
                              umask="077")
            self.assertEqual(first, again)

    def test_only_what_is_the_projects_own_is_packed(self):
        with tempfile.TemporaryDirectory() as folder:
            archive = Path(folder) / "source.tar.gz"
            self.pack(PROJECT, archive)
            listing = said("tar", "--numeric-owner", "-tvzf", archive).splitlines()
        names = [line.split(maxsplit=5)[5].split(" -> ")[0] for line in listing]
        self.assertEqual(names, sorted(names))
        self.assertEqual({line.split()[1] for line in listing}, {"0/0"})
        self.assertEqual({name.split("/")[0] for name in names}, {f"modemd-{version()}"})
        self.assertFalse([name for name in names if "/build/" in name or "/.git/" in name])


class Licences(unittest.TestCase):
    def test_the_text_is_the_same_everywhere(self):
        self.assertEqual((PROJECT / "LICENSES/MIT.txt").read_bytes(), LICENCE)
        self.assertIn(f"sha256  {hashlib.sha256(LICENCE).hexdigest()}  LICENSE\n",
                      text_of("buildroot/package/modemd/modemd.hash"))
        self.assertIn(f"file://LICENSE;md5={hashlib.md5(LICENCE).hexdigest()}\"",
                      text_of("yocto/recipes-connectivity/modemd/*.bb"))

    def test_debians_copy_has_the_same_words(self):
        grant = LICENCE.decode().split("\n\n", 2)[2]
        told = text_of("debian/copyright").split("License: Expat\n")[-1].replace("\n .\n", "\n\n")
        self.assertEqual(told.split(), grant.split())

    def test_all_packages_name_it(self):
        self.assertIn("\nPKG_LICENSE:=MIT\n", text_of("openwrt/Makefile"))
        self.assertIn("\nMODEMD_LICENSE = MIT\n", text_of("buildroot/package/modemd/modemd.mk"))
        self.assertIn('\nLICENSE = "MIT"\n', text_of("yocto/recipes-connectivity/modemd/*.bb"))
        self.assertIn("\nFiles: *\n", (PROJECT / ".reuse/dep5").read_text())


class Contents(unittest.TestCase):
    """The document of scripts/sbom, of archives that only have the right names."""

    NAMES = ["", "-musl-armhf", "-musl-mipsel", "-openwrt"]

    def setUp(self):
        self.folder = Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        library = self.folder / "toolchain/package/lib"
        for name, text in (("libc/musl/src/internal/version.h", '#define VERSION "1.2.4"\n'),
                           ("libcxx/include/__config", "#  define _LIBCPP_VERSION 160001\n")):
            (library / name).parent.mkdir(parents=True)
            (library / name).write_text(text)
        self.dist = self.folder / "dist"
        self.dist.mkdir()
        for name in self.NAMES:
            (self.dist / f"modemd-{version()}{name}.tar.gz").write_text(name)
        self.document = self.make()
        self.packages = {package["SPDXID"]: package for package in self.document["packages"]}

    def make(self):
        result = subprocess.run([PROJECT / "scripts/sbom", "--toolchain", self.folder / "toolchain",
                                 self.dist], check=True, capture_output=True,
                                env={"PATH": "/usr/bin:/bin", "SOURCE_DATE_EPOCH": "1773479700"})
        return json.loads(result.stdout)

    def related(self, kind, one):
        return {relation["relatedSpdxElement"] for relation in self.document["relationships"]
                if relation["relationshipType"] == kind and relation["spdxElementId"] == one}

    def test_the_head_is_that_of_an_spdx_document(self):
        head = {key: self.document[key] for key in ("spdxVersion", "dataLicense", "SPDXID")}
        self.assertEqual(head, {"spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0",
                                "SPDXID": "SPDXRef-DOCUMENT"})
        self.assertEqual(self.document["creationInfo"]["created"], "2026-03-14T09:15:00Z")
        self.assertRegex(self.document["documentNamespace"], r"^https://[^#\s]+$")

    def test_every_package_says_what_it_must(self):
        self.assertEqual(len(self.packages), len(self.document["packages"]))
        for name, package in self.packages.items():
            self.assertRegex(name, r"^SPDXRef-[A-Za-z0-9.-]+$")
            for key in ("name", "versionInfo", "downloadLocation", "licenseConcluded",
                        "licenseDeclared", "copyrightText", "primaryPackagePurpose"):
                self.assertTrue(package[key], f"{name}: {key}")
            self.assertIn(package["licenseDeclared"],
                          {"MIT", "Apache-2.0 WITH LLVM-exception",
                           "MIT AND (Apache-2.0 WITH LLVM-exception)"})

    def test_every_archive_is_there_with_its_digest(self):
        told = {package["packageFileName"]: package["checksums"][0]
                for package in self.packages.values() if "packageFileName" in package}
        self.assertEqual(told, {
            path.name: {"algorithm": "SHA256",
                        "checksumValue": hashlib.sha256(path.read_bytes()).hexdigest()}
            for path in self.dist.iterdir()})

    def test_every_relation_leads_somewhere(self):
        known = {"SPDXRef-DOCUMENT", *self.packages}
        for relation in self.document["relationships"]:
            self.assertLessEqual({relation["spdxElementId"], relation["relatedSpdxElement"]}, known)
        archives = {name for name, package in self.packages.items() if "packageFileName" in package}
        self.assertEqual(self.related("DESCRIBES", "SPDXRef-DOCUMENT"), archives)

    def test_static_programs_name_the_libraries_inside(self):
        linked = self.related("STATIC_LINK", f"SPDXRef-modemd-{version()}-musl-mipsel")
        named = {(self.packages[name]["name"], self.packages[name]["versionInfo"])
                 for name in linked}
        self.assertLessEqual({("musl", "1.2.4"), ("libc++", "16.0.1"), ("libunwind", "16.0.1")},
                             named)
        self.assertEqual(self.related("STATIC_LINK", f"SPDXRef-modemd-{version()}-openwrt"), set())

    def test_the_same_archives_give_the_same_document(self):
        self.assertEqual(self.make(), self.document)
        (self.dist / f"modemd-{version()}-openwrt.tar.gz").write_text("changed")
        self.assertNotEqual(self.make()["documentNamespace"], self.document["documentNamespace"])


class ShippedConfiguration(unittest.TestCase):
    """The files for /etc/kvt/wireless: every key is one that the daemon reads."""

    def test_keys_are_the_daemons(self):
        known = set(re.findall(r'"([A-Z_]+)";', (PROJECT / "src/state/published.h").read_text()))
        for path in sorted((PACKAGING / "etc").glob("*.conf")):
            keys = set(re.findall(r"^(?:# )?([A-Z_]+)=", path.read_text(), re.MULTILINE))
            self.assertTrue(keys, path.name)
            self.assertEqual(keys - known, set(), path.name)
            self.assertTrue(path.read_text().endswith("\n"))

    def test_the_clock_is_set_as_without_a_file(self):
        lines = (PACKAGING / "etc/cellmodem_provision_data.conf").read_text().splitlines()
        self.assertEqual([line for line in lines if line and not line.startswith("#")],
                         ["SYNC_TIME=yes", "DEBUG_MODE=0"])


class OpenWrt(unittest.TestCase):
    def test_includes_and_fields_stand_in_the_order_that_the_system_wants(self):
        makefile = text_of("openwrt/Makefile")
        marks = ["include $(TOPDIR)/rules.mk", "PKG_NAME:=", "PKG_HASH:=", "PKG_MAINTAINER:=",
                 "include $(INCLUDE_DIR)/package.mk", "include $(INCLUDE_DIR)/cmake.mk",
                 "define Package/modemd\n", "$(eval $(call BuildPackage,modemd))"]
        places = [makefile.find(mark) for mark in marks]
        self.assertNotIn(-1, places)
        self.assertEqual(places, sorted(places))

    def test_every_package_is_described_installed_and_built(self):
        makefile = text_of("openwrt/Makefile")
        packages = re.findall(r"^define Package/(\w+)$", makefile, re.MULTILINE)
        self.assertEqual(packages, ["modemd", "modemctl"])
        for name in packages:
            for part in (f"define Package/{name}/description\n", f"define Package/{name}/install\n",
                         f"$(eval $(call BuildPackage,{name}))\n"):
                self.assertIn(part, makefile)

    def test_older_and_newer_checks_find_the_same_test(self):
        self.assertEqual(text_of("openwrt/test.sh"), text_of("openwrt/test-version.sh"))


class Buildroot(unittest.TestCase):
    def test_the_makefile_looks_as_the_system_wants_it(self):
        lines = text_of("buildroot/package/modemd/modemd.mk").splitlines()
        self.assertEqual(lines[:6], ["#" * 80, "#", "# modemd", "#", "#" * 80, ""])
        for line in lines:
            self.assertNotRegex(line, r"^ +\S|\$\{|\s$|[^ \t]\\$")
            if found := re.match(r"(?:define )?([A-Z]\w*)(?: [+:]?=|$)", line):
                self.assertTrue(found[1].startswith("MODEMD_"), line)

    def test_the_help_fits_its_columns(self):
        for line in text_of("buildroot/package/modemd/Config.in").splitlines():
            self.assertLessEqual(len(line.expandtabs(8)), 72, line)

    def test_hashes_are_separated_by_two_blanks(self):
        lines = text_of("buildroot/package/modemd/modemd.hash").splitlines()
        for line in (line for line in lines if not line.startswith("#")):
            self.assertRegex(line, r"^sha256  (@SOURCE_SHA256@|[0-9a-f]{64})  \S+$")

    def test_the_tree_has_a_name_that_its_files_use(self):
        name = re.search(r"^name: (\w+)$", text_of("buildroot/external.desc"), re.MULTILINE)[1]
        for part in ("Config.in", "external.mk", "package/modemd/modemd.mk"):
            self.assertIn(f"BR2_EXTERNAL_{name}_PATH", text_of("buildroot", part))


class Yocto(unittest.TestCase):
    ORDER = ["SUMMARY", "DESCRIPTION", "SECTION", "LICENSE", "LIC_FILES_CHKSUM", "SRC_URI",
             "inherit", "SYSTEMD_SERVICE", "INITSCRIPT_NAME", "EXTRA_OECMAKE", "do_install",
             "PACKAGES", "FILES", "RDEPENDS"]

    def recipe(self):
        return text_of("yocto/recipes-connectivity/modemd/*.bb")

    def test_what_it_says_stands_in_the_usual_order(self):
        found = re.findall(r"^(\w+)(?:\b.*=|:append\(| )", self.recipe(), re.MULTILINE)
        known = [name for name in found if name in self.ORDER]
        self.assertEqual([n for n in self.ORDER if n in known], list(dict.fromkeys(known)))
        self.assertEqual(set(known), set(self.ORDER))

    def test_it_is_written_as_the_system_wants_it(self):
        recipe = self.recipe()
        self.assertNotIn("\t", recipe)
        self.assertNotRegex(recipe, r"INSANE_SKIP|AUTOREV|_append\b|\bcp \b|\bmkdir\b")
        self.assertNotRegex(recipe, r'(?<![}\w:/])/(usr|etc|lib|var|bin|sbin)\b')
        self.assertLessEqual(len(re.search(r'SUMMARY = "(.*)"', recipe)[1]), 80)
        for line in recipe.splitlines():
            if re.match(r"[A-Z]\w*(:\S+)?\s*[+?=]", line):
                self.assertRegex(line, r'^[A-Z]\w*(:\S+)? (=|=\+|\+=|\?=) ".*("|\\)$')

    def test_what_it_installs_is_in_the_source(self):
        named = re.findall(r"\$\{S\}/(\S+)", self.recipe())
        self.assertTrue(named)
        for name in named:
            self.assertTrue(list(PROJECT.glob(name.replace("$type", "service"))), name)

    def test_every_overridden_package_exists(self):
        packages = {"${PN}", *re.search(r'PACKAGES =\+ "(.*)"', self.recipe())[1].split()}
        overridden = set(re.findall(r"^(?:FILES|RDEPENDS|SYSTEMD_SERVICE):(\S+) =", self.recipe(),
                                    re.MULTILINE))
        self.assertEqual(overridden - packages, set())

    def test_the_layer_finds_its_recipes(self):
        layer = text_of("yocto/conf/layer.conf")
        collection = re.search(r'BBFILE_COLLECTIONS \+= "(\w+)"', layer)[1]
        for name in (f"BBFILE_PATTERN_{collection}", f"BBFILE_PRIORITY_{collection}",
                     f"LAYERSERIES_COMPAT_{collection}", f"LAYERDEPENDS_{collection}"):
            self.assertIn(f"\n{name} = ", layer)
        pattern = re.search(r'BBFILES \+= "\$\{LAYERDIR\}/(.*)"', layer)[1]
        self.assertEqual(len(list((PACKAGING / "yocto").glob(pattern))), 1)


class Scripts(unittest.TestCase):
    def test_they_are_clean(self):
        commands = [PROJECT / "scripts/packages", PROJECT / "scripts/release",
                    *(PROJECT / "gear/packages").glob("*.sh"),
                    PROJECT / "gear/packages/debian-life", PACKAGING / "openwrt/test.sh",
                    *(PACKAGING / "debian").glob("*.p[or]*")]
        self.assertGreater(len(commands), 10)
        found = subprocess.run(["shellcheck", "--external-sources", *commands], cwd=PROJECT,
                               capture_output=True, text=True, check=False)
        self.assertEqual((found.stdout, found.returncode), ("", 0))


class Workflow(unittest.TestCase):
    """The forge calls our commands and nothing else, so that it cannot drift."""

    def setUp(self):
        self.workflow = yaml.safe_load((PROJECT / ".github/workflows/ci.yml").read_text())
        self.steps = [step for job in self.workflow["jobs"].values() for step in job["steps"]]

    def test_it_runs_the_two_commands(self):
        runs = [step["run"] for step in self.steps if "run" in step]
        self.assertEqual(sorted(runs), [".ci/run", "scripts/cross"])
        for command in runs:
            self.assertTrue((PROJECT / command).stat().st_mode & 0o111, command)

    def test_beside_them_it_only_fetches_the_tree(self):
        others = [step for step in self.steps if "run" not in step]
        self.assertEqual({tuple(step) for step in others}, {("uses",)})
        self.assertEqual({step["uses"].split("@")[0] for step in others}, {"actions/checkout"})
        for job in self.workflow["jobs"].values():
            self.assertLessEqual(set(job), {"runs-on", "container", "timeout-minutes", "steps"})

    def test_it_may_only_read_and_runs_on_the_system_that_the_scripts_want(self):
        self.assertEqual(self.workflow["permissions"], {"contents": "read"})
        self.assertEqual({job["container"]["image"] for job in self.workflow["jobs"].values()},
                         {"debian:12"})


if __name__ == "__main__":
    unittest.main()
