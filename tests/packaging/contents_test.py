# SPDX-License-Identifier: MIT
"""Every binary of every package is hardened, and every package tells truly what it is made of."""
import hashlib
import json
import re

import pytest

from conftest import BUILD, packages_linked_to, run

LICENCES = {"MIT", "Zlib", "GPL-2.0-or-later", "LGPL-2.0-or-later", "LGPL-2.1-or-later", "BSD-3-Clause", "ZPL-2.1",
            "GPL-3.0-or-later WITH GCC-exception-3.1"}
# What a function begins with that may be called through a pointer: ENDBR64; BTI C and PACIASP, which also signs where it
# returns to.
LANDING_MARKS = {"X86-64": {b"\xf3\x0f\x1e\xfa"}, "AArch64": {b"\x5f\x24\x03\xd5", b"\x3f\x23\x03\xd5"}}


def binaries(contents, magic):
    found = [path for root in contents.values() for path in sorted(root.rglob("*"))
             if path.is_file() and not path.is_symlink() and path.read_bytes()[:len(magic)] == magic]
    if not found:
        pytest.skip("packages for another system")
    return found


def exported_functions(path, described):
    """The first bytes of each."""
    content = path.read_bytes()
    parts = [[int(number, 16) for number in match] for match in re.findall(r"LOAD +(\w+) (\w+) \w+ (\w+)", described)]
    for address in re.findall(r": (\w+) +\d+ FUNC +(?:GLOBAL|WEAK) +(?:DEFAULT|PROTECTED) +\d+ ", described):
        start = int(address, 16)
        (offset,) = [offset + start - begin for offset, begin, size in parts if begin <= start < begin + size]
        yield content[offset:offset + 4]


def test_linux_binaries_are_hardened(contents):
    if "VIREO_HARDENING:BOOL=ON" not in (BUILD / "CMakeCache.txt").read_text():
        pytest.skip("a build that is not packed for others")
    imports = {}
    for path in binaries(contents, b"\x7fELF"):
        described = run("readelf", "-hldnW", "--dyn-syms", path)
        assert re.search(r"Type: +DYN ", described), path
        assert re.search(r"GNU_RELRO .* R  ", described), f"{path} has tables that can be written"
        assert "BIND_NOW" in described and re.search(r"Flags: NOW", described), f"{path} is bound late"
        assert re.search(r"GNU_STACK .* RW  ", described), f"{path} has a stack that runs"
        assert not re.search(r" (RWE|TEXTREL)\b", described), f"{path} has code that can be written"
        machine = re.search(r"Machine:.* (\S+)", described)[1]
        if machine == "X86-64":
            assert "Properties: x86 feature: SHSTK" in described, f"{path} keeps to no shadow stack"
        assert set(exported_functions(path, described)) <= LANDING_MARKS[machine], f"{path} has functions that are no targets"
        if path.parent.name == "bin":
            assert re.search(r"Flags: NOW PIE", described), f"{path} lies where it was linked to"
        imports[path.name] = described
    # What copies into buffers of known size, or has such buffers. The filters' plug-ins only pass calls on.
    for name, described in imports.items():
        assert "__stack_chk_fail" in described or re.fullmatch(r"vireo_\w+\.so", name), f"{name} has no guards on its stack"
    for name in ("vireo", "libVireo.so.1.0.0"):
        assert re.search(r"__\w+_chk@", imports[name]), f"{name} copies without looking"


def test_windows_binaries_are_hardened(contents):
    for path in binaries(contents, b"MZ"):
        described = run("x86_64-w64-mingw32-objdump", "-p", path)
        assert {"HIGH_ENTROPY_VA", "DYNAMIC_BASE", "NX_COMPAT"} <= set(described.split()), path
        assert "relocations stripped" not in described, f"{path} lies where it was linked to"
        assert re.search(r"Entry 5 [0-9a-f]+ 0*[1-9a-f]", described), f"{path} cannot be moved"


@pytest.fixture
def bills(contents):
    found = {}
    for name, root in contents.items():
        (path,) = root.rglob("*.spdx.json")
        assert path.name == f"{name}.spdx.json"
        found[name] = root, path, json.loads(path.read_text())
    return found


def expression_is_known(expression):
    return expression == "NOASSERTION" or set(expression.split(" AND ")) <= LICENCES


def test_bills_of_materials_are_whole(bills):
    for name, (_, _, bill) in bills.items():
        assert (bill["spdxVersion"], bill["dataLicense"], bill["SPDXID"]) == ("SPDX-2.3", "CC0-1.0", "SPDXRef-DOCUMENT")
        assert bill["name"] and re.fullmatch(r"https://[^#\s]+", bill["documentNamespace"])
        assert re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ", bill["creationInfo"]["created"])
        assert all(re.match("(Organization|Tool|Person): .", creator) for creator in bill["creationInfo"]["creators"])
        elements = [bill["SPDXID"], *(entry["SPDXID"] for entry in bill["packages"] + bill["files"])]
        assert len(set(elements)) == len(elements)
        assert all(re.fullmatch(r"SPDXRef-[A-Za-z0-9.-]+", element) for element in elements)
        for package in bill["packages"]:
            assert package["name"] and package["downloadLocation"] and package["copyrightText"]
            assert re.match("NOASSERTION$|(Organization|Person): .", package["supplier"])
            assert expression_is_known(package["licenseConcluded"]) and expression_is_known(package["licenseDeclared"])
            assert package["filesAnalyzed"] == ("packageVerificationCode" in package)
        for file in bill["files"]:
            assert file["fileName"].startswith("./") and file["copyrightText"]
            assert expression_is_known(file["licenseConcluded"]), file
            assert all(expression_is_known(licence) for licence in file["licenseInfoInFiles"])
        for relation in bill["relationships"]:
            assert {relation["spdxElementId"], relation["relatedSpdxElement"]} <= set(elements)
            assert relation["relationshipType"] in {"DESCRIBES", "CONTAINS", "DYNAMIC_LINK", "STATIC_LINK", "GENERATED_FROM"}
        assert [relation for relation in bill["relationships"] if relation["relationshipType"] == "DESCRIBES"] == [
            {"spdxElementId": "SPDXRef-DOCUMENT", "relationshipType": "DESCRIBES",
             "relatedSpdxElement": bill["packages"][0]["SPDXID"]}]
        assert bill["packages"][0]["name"] == name


def test_bills_of_materials_are_true(bills):
    for root, place, bill in bills.values():
        packed = {"./" + path.relative_to(root).as_posix(): path for path in root.rglob("*")
                  if path.is_file() and not path.is_symlink() and path != place}
        listed = {file["fileName"]: file for file in bill["files"]}
        assert listed.keys() == packed.keys()
        for name, file in listed.items():
            for checksum in file["checksums"]:
                content = packed[name].read_bytes()
                assert hashlib.new(checksum["algorithm"].lower(), content).hexdigest() == checksum["checksumValue"], name
        whole = hashlib.sha1("".join(sorted(file["checksums"][0]["checksumValue"] for file in bill["files"])).encode())
        assert bill["packages"][0]["packageVerificationCode"]["packageVerificationCodeValue"] == whole.hexdigest()


def test_licences_are_those_of_the_sources(bills):
    of_gcc = {"libgcc_s_seh-1.dll", "libstdc++-6.dll"}
    for _, _, bill in bills.values():
        declared = {"MIT"}
        has_x264 = any(file["fileName"].endswith("/licences/ffmpeg/x264.txt") for file in bill["files"])
        for file in bill["files"]:
            name = file["fileName"].split("/")[-1]
            if name in of_gcc:
                licence = "GPL-3.0-or-later WITH GCC-exception-3.1"
            elif name == "libwinpthread-1.dll":
                licence = "MIT AND BSD-3-Clause"
            elif re.match(r"(av|sw)\w+-\d+\.dll", name):
                licence = "GPL-2.0-or-later" if has_x264 else "LGPL-2.1-or-later"
            elif re.search(r"frei0r-1/|libvireo_frei0r\.so|VireoFrei0r\.dll|obs-plugins/.*\.(so|effect)$", file["fileName"]):
                licence = "GPL-2.0-or-later"
            elif file["fileTypes"] == ["BINARY"]:
                licence = "MIT"
            else:
                continue
            assert file["licenseConcluded"] == licence, file["fileName"]
            declared.update(licence.split(" AND "))
        assert bill["packages"][0]["licenseDeclared"] == " AND ".join(sorted(declared))


def test_dependencies_have_the_versions_that_were_found(bills):
    for name, (_, _, bill) in bills.items():
        entries = {package["name"]: package for package in bill["packages"]}
        if "libc6" not in entries:  # Windows has no packages
            assert "KERNEL32.dll" in entries and entries["GCC run-time libraries"]["versionInfo"]
            continue
        for package in ("libc6", "libstdc++6"):
            assert entries[package]["versionInfo"] == packages_linked_to("-W", "-f", "${Version}", package), name
        if name == "vireo-filters":
            assert {"libavcodec59", "CLI11", "nlohmann-json", "frei0r.h", "libmlt7"} <= entries.keys()
        else:
            assert "vireo-filters" in entries
