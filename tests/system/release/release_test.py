#!/usr/bin/env python3
"""What scripts/release stands on: the comparison of two releases, and the bill of materials."""
import copy
import gzip
import hashlib
import io
import json
import os
import pathlib
import struct
import subprocess
import tarfile
import tempfile
import unittest

HERE = pathlib.Path(__file__).resolve().parent
TOP = HERE.parents[2]


def run(*command, **environment):
    words = [str(word) for word in command]
    return subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                          env={**os.environ, **environment})


def tar_of(files, mode=0o644, time=0):
    buffer = io.BytesIO()
    with tarfile.open(fileobj=buffer, mode="w", format=tarfile.GNU_FORMAT) as archive:
        for name, data in files.items():
            info = tarfile.TarInfo(name)
            info.size, info.mode, info.mtime = len(data), mode, time
            archive.addfile(info, io.BytesIO(data))
    return buffer.getvalue()


def packed(data, time=0):
    return gzip.compress(data, mtime=time)


def ar_of(files):
    result = b"!<arch>\n"
    for name, data in files.items():
        result += f"{name:<16}{0:<12}{0:<6}{0:<6}{'100644':<8}{len(data):<10}`\n".encode()
        result += data + b"\n" * (len(data) % 2)
    return result


def cpio_of(files):
    result = b""
    for name, data in [*files.items(), ("TRAILER!!!", b"")]:
        numbers = [1, 0o100644, 0, 0, 1, 0, len(data), 0, 0, 0, 0, len(name) + 1, 0]
        result += b"070701" + "".join(f"{number:08x}" for number in numbers).encode()
        result += name.encode() + b"\0"
        result += b"\0" * (-len(result) % 4) + data
        result += b"\0" * (-len(result) % 4)
    return result


def rpm_header_of(tags):
    entries, store = b"", b""
    for tag, value in tags.items():
        entries += struct.pack(">IIiI", tag, 7, len(store), len(value))
        store += value
    return b"\x8e\xad\xe8\x01\0\0\0\0" + struct.pack(">II", len(tags), len(store)) + entries + store


def rpm_of(tags, payload):
    signature = rpm_header_of({1000: b"1234"})
    return (b"\xed\xab\xee\xdb".ljust(96, b"\0") + signature + b"\0" * (-len(signature) % 8) +
            rpm_header_of(tags) + payload)


class SameReleaseTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.one, self.other = (pathlib.Path(folder.name) / name for name in ("one", "other"))

    def compare(self, one, other):
        """The exit status, and what is printed, for two releases of files."""
        for place, files in ((self.one, one), (self.other, other)):
            place.mkdir()
            for name, data in files.items():
                (place / name).write_bytes(data)
        end = run(TOP / "scripts/lib/same-release", self.one, self.other)
        self.assertEqual(end.stderr, "")
        return end.returncode, end.stdout

    def assert_difference(self, name, one, other, *lines):
        self.assertEqual(self.compare({name: one, "same": b"x"}, {name: other, "same": b"x"}),
                         (1, "".join(line + "\n" for line in lines)))

    def test_same_bytes_are_the_same(self):
        files = {"a.tar.gz": packed(tar_of({"x": b"y"})), "SHA256SUMS": b"1"}
        size = sum(len(data) for data in files.values())
        self.assertEqual(self.compare(files, files), (0, f"the same: 2 files, {size} bytes\n"))

    def test_byte_of_a_file_is_named(self):
        self.assert_difference("SHA256SUMS", b"abcd", b"abXd", "SHA256SUMS: byte 2 is 0x63, and 0x58")

    def test_length_of_a_file_is_named(self):
        self.assert_difference(
            "x", b"abcd", b"ab", "x: 4 bytes, and 2; the shorter one is how the other begins")

    def test_file_of_one_release_is_named(self):
        self.assertEqual(self.compare({"a": b"", "b": b""}, {"a": b"", "c": b""}),
                         (1, f"b: only in {self.one}\nc: only in {self.other}\n"))

    def test_member_of_a_compressed_archive_is_named(self):
        self.assert_difference(
            "a.tar.gz", packed(tar_of({"x/1": b"12", "x/2": b"34"})),
            packed(tar_of({"x/1": b"12", "x/2": b"35"})),
            "a.tar.gz: x/2: byte 1 is 0x34, and 0x35")

    def test_facts_of_a_member_are_named(self):
        self.assert_difference(
            "a.tar", tar_of({"x": b""}, 0o644, 1), tar_of({"x": b""}, 0o640, 2),
            "a.tar: x: mode is 0o644, and 0o640", "a.tar: x: time is 1, and 2")

    def test_members_of_one_archive_are_named(self):
        self.assert_difference(
            "a.tar", tar_of({"x": b"", "y": b""}), tar_of({"y": b"", "z": b""}),
            "a.tar: x: only in the first", "a.tar: z: only in the second")

    def test_order_is_named(self):
        self.assert_difference(
            "a.tar", tar_of({"x": b"", "y": b""}), tar_of({"y": b"", "x": b""}),
            "a.tar: in another order: x, and y")

    def test_compression_is_named(self):
        content = tar_of({"x": b""})
        self.assert_difference("a.tar.gz", packed(content, 1), packed(content, 2),
                               "a.tar.gz: compressed otherwise: byte 4 is 0x01, and 0x02")

    def test_debian_packages_are_looked_into(self):
        def package(text):
            return ar_of({"debian-binary": b"2.0\n", "control.tar.gz": packed(tar_of({"control": b"x"})),
                          "data.tar.gz": packed(tar_of({"./usr/bin/qorctl": text}))})
        self.assert_difference("a.deb", package(b"ELF1"), package(b"ELF2"),
                               "a.deb: data.tar.gz: ./usr/bin/qorctl: byte 3 is 0x31, and 0x32")

    def test_rpm_packages_are_looked_into(self):
        self.assert_difference(
            "a.rpm", rpm_of({1006: b"\0\0\0\1", 1007: b"here"}, packed(cpio_of({"./x": b"123"}))),
            rpm_of({1006: b"\0\0\0\1", 1007: b"thor"}, packed(cpio_of({"./x": b"153"}))),
            "a.rpm: header: tag 1007: byte 0 is 0x68, and 0x74",
            "a.rpm: payload: ./x: byte 1 is 0x32, and 0x35")

    def test_damaged_archive_is_a_file(self):
        self.assert_difference("a.tar.gz", packed(tar_of({"x": b""})), b"\x1f\x8b\x08bad",
                               "a.tar.gz: byte 3 is 0x00, and 0x62")

    def test_what_is_no_release_is_refused(self):
        self.one.mkdir()
        for other in (self.one, self.other):
            end = run(TOP / "scripts/lib/same-release", self.one, other)
            self.assertEqual((end.returncode, end.stdout), (1, ""))
            self.assertIn("is empty", end.stderr)
        self.assertEqual(run(TOP / "scripts/lib/same-release", self.one).returncode, 2)


class BillTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        for name in ("qor-1.2.3.tar.gz", "qor_1.2.3_amd64.deb"):
            (self.folder / name).write_text(name, encoding="utf-8")

    def bill(self, **environment):
        return run(TOP / "scripts/lib/sbom", "1.2.3", "c0ffee", self.folder,
                   **{"SOURCE_DATE_EPOCH": "1700000000", **environment})

    def check(self, document):
        """What check-sbom says to the document beside the files."""
        path = self.folder / "bill.json"
        path.write_text(json.dumps(document), encoding="utf-8")
        end = run(HERE / "check-sbom", path)
        path.unlink()
        self.assertEqual(end.stderr, "")
        self.assertEqual(end.returncode, 1 if end.stdout else 0)
        return end.stdout.replace(f"{path}: ", "")

    def document(self):
        end = self.bill()
        self.assertEqual((end.returncode, end.stderr), (0, ""))
        return json.loads(end.stdout)

    def test_bill_is_what_the_format_demands(self):
        self.assertEqual(self.check(self.document()), "")

    def test_bill_names_commit_time_and_versions(self):
        document = self.document()
        self.assertEqual(document["creationInfo"]["created"], "2023-11-14T22:13:20Z")
        packages = {package["name"]: package for package in document["packages"]}
        self.assertEqual(packages["qor"]["versionInfo"], "1.2.3")
        self.assertEqual(packages["qor"]["sourceInfo"], "commit c0ffee")
        self.assertEqual(packages["qor-1.2.3.tar.gz"]["primaryPackagePurpose"], "SOURCE")
        known = run("dpkg-query", "-W", "-f", "${Version}", "libfmt-dev").stdout
        self.assertEqual(packages["fmt"]["versionInfo"], known)

    def test_bill_is_the_same_anywhere(self):
        one = self.bill(LC_ALL="C", TZ="UTC")
        other = self.bill(LC_ALL="C.UTF-8", TZ="Asia/Kolkata", HOME="/nowhere")
        self.assertEqual(one.stdout, other.stdout)
        (self.folder / "qor-1.2.3.tar.gz").write_text("changed", encoding="utf-8")
        self.assertNotEqual(json.loads(self.bill().stdout)["documentNamespace"],
                            json.loads(one.stdout)["documentNamespace"])

    def test_bill_needs_its_time(self):
        end = self.bill(SOURCE_DATE_EPOCH="")
        self.assertEqual(
            (end.returncode, end.stderr), (1, "scripts/lib/sbom: SOURCE_DATE_EPOCH is not set\n"))

    def test_each_demanded_field_is_missed(self):
        whole = self.document()
        for field in ("spdxVersion", "dataLicense", "SPDXID", "name", "documentNamespace",
                      "creationInfo", "packages", "relationships"):
            document = copy.deepcopy(whole)
            del document[field]
            self.assertEqual(self.check(document), f"$: '{field}' is a required property\n")
        for field in ("created", "creators"):
            document = copy.deepcopy(whole)
            del document["creationInfo"][field]
            self.assertEqual(self.check(document),
                             f"$.creationInfo: '{field}' is a required property\n")
        for field in ("SPDXID", "name", "downloadLocation", "licenseConcluded", "copyrightText"):
            document = copy.deepcopy(whole)
            del document["packages"][1][field]
            self.assertEqual(self.check(document),
                             f"$.packages[1]: '{field}' is a required property\n")

    def test_what_does_not_fit_together_is_found(self):
        whole = self.document()
        document = copy.deepcopy(whole)
        document["packages"].append(document["packages"][0])
        self.assertEqual(self.check(document), "SPDXRef-qor stands twice\n")
        document = copy.deepcopy(whole)
        document["relationships"].append(
            {"spdxElementId": "SPDXRef-qor", "relationshipType": "CONTAINS",
             "relatedSpdxElement": "SPDXRef-x"})
        self.assertEqual(self.check(document),
                         "SPDXRef-x is related to something and is not there\n")
        document = copy.deepcopy(whole)
        document["relationships"] = [relation for relation in document["relationships"]
                                     if relation["relatedSpdxElement"] != "SPDXRef-fmt"]
        self.assertEqual(self.check(document), "SPDXRef-fmt is related to nothing\n"
                                               "fmt: is not said to be compiled in\n")
        (self.folder / "qor-1.2.3.tar.gz").write_text("changed", encoding="utf-8")
        (self.folder / "qor_1.2.3_amd64.deb").unlink()
        self.assertEqual(self.check(whole), "qor-1.2.3.tar.gz has another checksum\n"
                                            "qor_1.2.3_amd64.deb is not there\n")


class Folder(unittest.TestCase):
    def assert_refused(self, sums):
        """In a folder of somebody's photo, also for a caller who names it from where they are."""
        with tempfile.TemporaryDirectory() as place:
            folder = pathlib.Path(place, "mine")
            folder.mkdir()
            (folder / "photo").write_text("mine", encoding="utf-8")
            (folder / "SHA256SUMS").write_text(sums, encoding="utf-8")
            for command in (["release", "--no-rpm"], ["lib/release-twice"]):
                end = subprocess.run([TOP / "scripts" / command[0], *command[1:], "mine"], cwd=place,
                                     stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
                self.assertEqual(end.returncode, 1)
                self.assertIn(f"{folder} ", end.stderr)
                self.assertTrue((folder / "photo").exists())

    def test_folder_with_more_than_a_release_is_not_replaced(self):
        self.assert_refused("0  other\n")

    def test_folder_with_sums_of_its_own_is_not_replaced(self):
        self.assert_refused(hashlib.sha256(b"mine").hexdigest() + "  photo\n")


unittest.main()
