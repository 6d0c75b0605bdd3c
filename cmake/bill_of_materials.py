#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes an SPDX 2.3 bill of materials into each package that lies in a folder, ready to be packed.

bill_of_materials.py FOLDER VERSION
"""
import datetime
import fnmatch
import functools
import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys
import tomllib

SOURCES = pathlib.Path(__file__).resolve().parent.parent
TABLE = tomllib.loads((SOURCES / "cmake/components.toml").read_text(encoding="utf-8"))
LICENCE_LINE = re.compile(rb"SPDX-License-Identifier: ([A-Za-z0-9.+-]+)")


def fits(path, patterns):
    """A pattern names the last parts of a path."""
    return any(fnmatch.fnmatch("/" + path, "*/" + pattern) for pattern in patterns)


def output(*command):
    try:
        return subprocess.run(command, check=True, capture_output=True, text=True, env={**os.environ, "LC_ALL": "C"}).stdout
    except (OSError, subprocess.CalledProcessError):
        return ""


@functools.cache
def version_of(package):
    """As the system that is built for has it, else this machine; none where there is no such."""
    query = ["-W", "-f", "${Version}\n", package]
    found = output("dpkg-query", *query) or output("dpkg-query", "--admindir=/var/lib/dpkg", *query)
    return found.split("\n")[0]


@functools.cache
def owners():
    """The package of each library of the system that is built for. A question for one takes the package manager as long as
    that for all."""
    found = {}
    for line in output("dpkg-query", "-S", "*-linux-gnu/*.so*").splitlines():
        folder, library = line.rsplit("/", 1)
        if folder.endswith("-linux-gnu") and not line.startswith("diversion"):
            found[library] = line.split(":")[0]
    return found


@functools.cache
def licence_of_sources(folders):
    """Of all sources in some folders, as their own lines say."""
    found = set()
    for folder in folders:
        for path in sorted((SOURCES / folder).rglob("*")):
            if path.suffix in (".c", ".cpp", ".h", ".in", ".rc"):
                found.update(LICENCE_LINE.findall(path.read_bytes()[:200]))
    return " AND ".join(sorted(licence.decode() for licence in found))


def is_binary(content):
    return content[:4] == b"\x7fELF" or content[:2] == b"MZ"


def licence_of_copy(entry, content):
    """As the table says, or as the file itself does."""
    found = [licence for text, licence in entry.get("says", {}).items() if text.encode() in content]
    if "licence" not in entry and len(found) != 1:
        sys.exit(f"a library of {entry['name']} does not say its licence")
    return entry["licence"] if "licence" in entry else found[0]


def needed_libraries(path, content):
    if content[:4] == b"\x7fELF":
        return re.findall(r"\(NEEDED\).*\[(.+)\]", output("readelf", "-dW", str(path)))
    return re.findall(r"DLL Name: (\S+)", output("x86_64-w64-mingw32-objdump", "-p", str(path)))


def identifier(kind, name):
    return f"SPDXRef-{kind}-" + re.sub(r"[^A-Za-z0-9.]+", "-", name).strip("-")


class Bill:
    def __init__(self, root, name, version):
        self.root, self.name, self.version = root, name, version
        self.files, self.others, self.relations = [], {}, set()
        self.package = identifier("Package", name)

    def relate(self, one, how, other):
        self.relations.add((one, how, other))

    def other(self, name, version, licence, supplier="NOASSERTION"):
        key = identifier("Package", name)
        self.others[key] = {
            "SPDXID": key, "name": name, **({"versionInfo": version} if version else {}), "supplier": supplier,
            "downloadLocation": "NOASSERTION", "filesAnalyzed": False, "licenseConcluded": licence,
            "licenseDeclared": licence, "copyrightText": "NOASSERTION"}
        return key

    def licence_of_file(self, path, content):
        for entry in TABLE["copied"]:
            if fits(path, entry["files"]):
                return licence_of_copy(entry, content)
        if is_binary(content):
            made_of = [entry["sources"] for entry in TABLE["binaries"] if fits(path, entry["files"])]
            if not made_of:
                sys.exit(f"cmake/components.toml does not say what {path} is made of")
            return licence_of_sources(tuple(made_of[0]))
        own = LICENCE_LINE.search(content[:400])
        if own:
            return own[1].decode()
        # A licence has none of its own; the rest is ours.
        return "NOASSERTION" if re.search(r"/(doc|licences)/.*(\.txt|copyright|LICENSE)$", path) else "MIT"

    def add_file(self, path):
        name = "/" + path.relative_to(self.root).as_posix()
        content = path.read_bytes()
        key = identifier("File", name)
        licence = self.licence_of_file(name, content)
        self.files.append({
            "SPDXID": key, "fileName": "." + name, "fileTypes": ["BINARY" if is_binary(content) else "OTHER"],
            "checksums": [{"algorithm": algorithm.upper(), "checksumValue": hashlib.new(algorithm, content).hexdigest()}
                          for algorithm in ("sha1", "sha256")],
            "licenseConcluded": licence, "licenseInfoInFiles": licence.split(" AND "), "copyrightText": "NOASSERTION"})
        self.relate(self.package, "CONTAINS", key)
        copied = [entry for entry in TABLE["copied"] if fits(name, entry["files"])]
        for entry in copied:
            self.relate(key, "GENERATED_FROM", self.other(entry["name"], version_of(entry["debian"]), licence))
        if not is_binary(content):
            return
        system = "linux" if content[:4] == b"\x7fELF" else "windows"
        for entry in TABLE["inside"]:
            if (fits(name, entry["files"]) and entry.get("on", system) == system
                    and entry.get("says", "").encode() in content):
                debian = entry["cross"] if "cross" in entry and "DPKG_ADMINDIR" in os.environ else entry["debian"]
                self.relate(key, "STATIC_LINK", self.other(entry["name"], version_of(debian), entry["licence"]))
        for library in needed_libraries(path, content):
            self.link(path, key, library, system)

    def link(self, path, key, library, system):
        own = [found for found in [path.parent / library, *sorted(self.root.rglob(library))] if found.is_file()]
        if own:
            name = "/" + own[0].resolve().relative_to(self.root.resolve()).as_posix()
            self.relate(key, "DYNAMIC_LINK", identifier("File", name))
        elif library.startswith(("libVireo.", "libVireoHost.")):
            main = self.other("vireo-filters", self.version, "MIT AND GPL-2.0-or-later", "Organization: Vireo developers")
            self.relate(key, "DYNAMIC_LINK", main)
        elif system == "windows":
            self.relate(key, "DYNAMIC_LINK", self.other(library, "", "NOASSERTION"))
        else:
            licences = [licence for prefix, licence in TABLE["linked"].items() if library.startswith(prefix)]
            if not licences:
                sys.exit(f"cmake/components.toml names no licence of {library}")
            owner = owners().get(library, "")
            self.relate(key, "DYNAMIC_LINK", self.other(owner or library, owner and version_of(owner), licences[0]))

    def written(self, place):
        paths = sorted(path for path in self.root.rglob("*") if path.is_file() and not path.is_symlink() and path != place)
        for path in paths:
            self.add_file(path)
        if len({file["SPDXID"] for file in self.files}) != len(self.files):
            sys.exit("two files have one identifier")
        sums = sorted(file["checksums"][0]["checksumValue"] for file in self.files)
        code = hashlib.sha1("".join(sums).encode()).hexdigest()
        licences = sorted({licence for file in self.files for licence in file["licenseInfoInFiles"]} - {"NOASSERTION"})
        joined = " AND ".join(licences)
        created = datetime.datetime.fromtimestamp(
            int(os.environ.get("SOURCE_DATE_EPOCH", datetime.datetime.now().timestamp())), datetime.timezone.utc)
        package = {
            "SPDXID": self.package, "name": self.name, "versionInfo": self.version,
            "supplier": "Organization: Vireo developers", "downloadLocation": "NOASSERTION", "filesAnalyzed": True,
            "packageVerificationCode": {"packageVerificationCodeValue": code,
                                        "packageVerificationCodeExcludedFiles": [f"./{place.relative_to(self.root)}"]},
            "licenseConcluded": joined, "licenseDeclared": joined, "licenseInfoFromFiles": licences,
            "copyrightText": "Vireo developers", "primaryPackagePurpose": "APPLICATION"}
        self.relate("SPDXRef-DOCUMENT", "DESCRIBES", self.package)
        return {
            "SPDXID": "SPDXRef-DOCUMENT", "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0",
            "name": f"{self.name}-{self.version}",
            "documentNamespace": f"https://vireo.invalid/spdx/{self.name}-{self.version}-{code}",
            "creationInfo": {"created": f"{created:%Y-%m-%dT%H:%M:%SZ}",
                             "creators": ["Organization: Vireo developers", f"Tool: bill_of_materials.py-{self.version}"]},
            "packages": [package, *(self.others[key] for key in sorted(self.others))],
            "files": self.files,
            "relationships": [{"spdxElementId": one, "relationshipType": how, "relatedSpdxElement": other}
                              for one, how, other in sorted(self.relations)]}


def main():
    folder, version = pathlib.Path(sys.argv[1]), sys.argv[2]
    # The packages' documentation tells what packages there are.
    for licences in sorted([*folder.glob("*/usr/share/doc/*"), *folder.glob("licences")]):
        windows = licences.name == "licences"
        name = "vireo-filters" if windows else licences.name
        place = licences / f"{name}.spdx.json"
        bill = Bill(licences.parent if windows else licences.parents[3], name, version).written(place)
        place.write_text(json.dumps(bill, indent=1) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()
