"""The items of a report: python3 extract.py KIND FILE. Keeps them, prints their number."""
import re
import sys

HEADS = {"ctrl": rb"RAID Controller.*:", "ld": rb"(RG|sRG|scRG)\d", "pd": rb"PD\d",
         "smart": rb"PD\d", "pssd": rb"Bus"}
COLUMNS = (b"Current", b"Worst", b"Raw Data", b"Threshold")


def extract(kind, path):
    items = []
    add = items.append
    head = re.compile(HEADS[kind]).match
    drive = re.compile(rb">(LD\d+) \((.*),([^,]*),([^,]*)\)").match
    root = section = b""
    table = False
    with open(path, "rb") as lines:
        for line in lines:
            if table:
                if line.startswith(b"---") or not line.strip():
                    continue
                add((section, b"SMART Detail", b"", b"TRUE"))
                add((b"SMART Detail", b"ID", line[:4].strip(), b"TRUE"))
                add((b"SMART Detail", b"Attribute", line[4:44].strip(), b"TRUE"))
                for name, cell in zip(COLUMNS, line[45:].split()):
                    add((b"SMART Detail", name, cell, b"TRUE"))
            elif head(line):
                root = section = line.strip()
                add((b"", root, b"", b"TRUE"))
            elif line.startswith(b"### "):
                section = line.strip()
                add((root, section, b"", b"TRUE"))
            elif kind == "smart" and line.startswith(b"ID ") and b"Attribute" in line:
                table = True
            elif line.startswith(b">>PD"):
                add((section, b"PD List", b"", b"TRUE"))
                add((b"PD List", b"PD No.", line[2:line.index(b"(")].strip(), b"TRUE"))
            elif line.startswith(b">LD"):
                parts = drive(line)
                add((section, b"LD List", b"", b"TRUE"))
                add((b"LD List", b"LD No.", parts[1], b"TRUE"))
                add((b"LD List", b"State", parts[4].strip(), b"TRUE"))
                add((b"LD List", b"Capacity", parts[3].strip(), b"TRUE"))
                add((b"LD List", b"Name", parts[2].strip(), b"TRUE"))
            else:
                key, colon, value = line.partition(b":")
                if colon and key:
                    add((section, key.strip(), value.strip(), b"TRUE"))
    return items


print(len(extract(sys.argv[1], sys.argv[2])))
