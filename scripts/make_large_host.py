#!/usr/bin/env python3
"""Writes data/hosts/large.json: 4 controllers, 16 RAID groups, 240 drives, 3 PCIe SSDs.

    scripts/make_large_host.py > data/hosts/large.json
"""
import json

CONTROLLERS = 4
SLOTS = 30  # of an enclosure; a controller has two

PCI_OTHERS = [("00:1f.2", "8086", "a182", "8086", "7270", "09"),
              ("1a:00.0", "8086", "1572", "8086", "0002", "01"),
              ("1a:00.1", "8086", "1572", "8086", "0002", "01")]
PCI_CONTROLLERS = [("3b:00.0", "1000", "005d", "1000", "9361", "02"),
                   ("5e:00.0", "1000", "0014", "1000", "9480", "01"),
                   ("86:00.0", "1000", "0016", "1000", "9461", "01"),
                   ("af:00.0", "1000", "10e2", "1000", "4000", "00")]
PCI_SSDS = [("b1:00.0", "1aed", "2001", "1aed", "2001", "04"),
            ("b2:00.0", "8086", "0a54", "8086", "4702", "00"),
            ("d8:00.0", "144d", "a822", "144d", "a801", "01")]

PRODUCTS = [("TRC 3108-8i 2GB", "24.21.0-0148", "4.680.00-8527", "Aug 21 2020, 10:32:15"),
            ("TRC 3516-16e 4GB", "51.16.0-4076", "5.160.02-3552", "Jun 11 2021, 08:57:41"),
            ("TRC 3508-8i 2GB", "51.16.0-4076", "5.160.02-3552", "Jun 11 2021, 08:57:41"),
            ("TRC 3916-16i 8GB", "52.22.0-4544", "5.220.02-3691", "Feb 03 2023, 17:20:08")]

SATA_ROWS = [(1, "Read Error Rate", 100, 100, "0", "16"),
             (3, "Spin-Up Time", 128, 121, "413", "24"),
             (4, "Start/Stop Count", 100, 100, "31", "0"),
             (5, "Reallocated Sectors Count", 100, 100, "0", "5"),
             (9, "Power-On Hours", 98, 98, "0", "0"),
             (194, "Temperature", 176, 150, "0", "0"),
             (197, "Current Pending Sector Count", 100, 100, "0", "0"),
             (198, "Off-Line Scan Uncorrectable Sector Count", 100, 100, "0", "0"),
             (199, "UltraDMA CRC Error Count", 200, 200, "0", "0")]
SATA_SSD_ROWS = [(5, "Reallocated Sectors Count", 100, 100, "0", "10"),
                 (9, "Power-On Hours", 97, 97, "0", "0"),
                 (177, "Wear Leveling Count", 94, 94, "211", "5"),
                 (194, "Temperature", 70, 58, "0", "0"),
                 (241, "Total LBAs Written", 99, 99, "184467440737", "0")]
SAS_ROWS = [(None, "Grown Defects", "0", "-"),
            (None, "Start-Stop Cycles", "27", "50000"),
            ("[Head Read]", "Errors Corrected", "18244", "-"),
            ("[Head Read]", "Errors Uncorrected", "0", "1"),
            ("[Head Write]", "Errors Corrected", "12", "-"),
            ("[Head Write]", "Errors Uncorrected", "0", "1")]


def sata(rows):
    names = ("id", "name", "current", "worst", "value", "threshold")
    return [dict(zip(names, row)) for row in rows]


def sas(rows):
    names = ("head", "name", "value", "threshold")
    return [{k: v for k, v in zip(names, row) if v is not None} for row in rows]


def model(interface, media, vendor, product, firmware, size, speed, smart):
    return {"interface": interface, "media": media, "vendor": vendor, "product": product,
            "firmware": firmware, "size": size, "linkSpeed": speed, "smart": smart}


MODELS = {
    "sas-1200": model("SAS", "HDD", "NORDLYS", "NL1200MM0129", "N102", "1.091TB", "12.0Gb/s",
                      sas(SAS_ROWS)),
    "sas-ssd-800": model("SAS", "SSD", "TERN", "TNX800SS1B", "A3C1", "745.211GB", "12.0Gb/s", []),
    "sata-8000": model("SATA", "HDD", "ATA", "KESTREL K8000NX0255", "KT02", "7.276TB", "6.0Gb/s",
                       sata(SATA_ROWS)),
    "sata-ssd-480": model("SATA", "SSD", "ATA", "MERLIN M480DC", "M1QA", "447.130GB", "6.0Gb/s",
                          sata(SATA_SSD_ROWS)),
}

# How many drives in a row serve what, as which model.
USES = ([("LD0", "sas-1200")] * 2 + [("LD1", "sas-1200")] * 16 + [("LD2", "sata-8000")] * 24 +
        [("LD4", "sata-ssd-480")] * 2 + [("GHS", "sas-1200")] * 2 + [("DHS sRG1", "sas-1200")] +
        [("DHS RG2", "sata-8000")] * 2 + [("RLD2", "sata-8000")] +
        [("Unassigned", "sas-ssd-800")] * 6 + [("Unassigned", "sata-8000")] * 4)

# What is out of order, per controller: drive number to status.
STATUSES = [{50: "Unconfig BAD"},
            {19: "FAILED", 20: "REBUILD", 53: "Foreign", 57: "Unconfig BAD"},
            {1: "COPYBACK", 49: "COPYBACK", 54: "Foreign"},
            {3: "OFFLINE", 4: "FAILED", 5: "REBUILD", 59: "JBOD"}]


def usual_status(use):
    if use in ("GHS",) or use.startswith("DHS"):
        return "HOT SPARE"
    return "Unconfig GOOD" if use == "Unassigned" else "ONLINE"


def drive(controller, number):
    use, name = USES[number]
    status = STATUSES[controller].get(number, usual_status(use))
    hours = 9000 + 61 * number + 4000 * controller
    serial = f"{name[:3].upper()}{controller}{number:02d}{(number * 7919 + controller * 104729) % 9973:04d}"
    record = {"no": number, "use": use, "status": status, "model": name,
              "enclosure": number // SLOTS, "slot": number % SLOTS, "serial": serial,
              "wwn": f"5000c5007{controller:x}{number:02x}{(number * 40503) % 65536:04x}"}
    if status not in ("FAILED", "OFFLINE"):
        record["temperature"] = 27 + (number * 5 + controller) % 13
    record["powerOnHours"] = hours
    if usual_status(use) != "ONLINE":
        record["power"] = "Power Save"
    if status in ("FAILED", "Unconfig BAD"):
        record.update(mediaErrors=117 + number, otherErrors=6, predictiveFailures=2)
    if name.startswith("sata"):
        record["smart"] = {"Power-On Hours": str(hours),
                           "Temperature": str(record.get("temperature", 0))}
    return record


def logical_drive(number, name, capacity, state, **more):
    return {"no": number, "name": name, "capacity": capacity, "state": state, **more}


def state_of(controller, first, last):
    ill = {"FAILED", "OFFLINE", "REBUILD"}
    degraded = any(first <= n <= last and s in ill for n, s in STATUSES[controller].items())
    return "Degraded" if degraded else "Optimal"


def groups(controller):
    return [
        {"name": "RG0", "level": "RAID 1", "size": "1.090TB", "drives": list(range(0, 2)),
         "lds": [logical_drive(0, f"boot{controller}", "1.090TB", state_of(controller, 0, 1))]},
        {"name": "sRG1", "level": "RAID 10", "size": "8.727TB", "drives": list(range(2, 18)),
         "lds": [logical_drive(1, "databases", "8.727TB", state_of(controller, 2, 17),
                               stripeSize="256KB")]},
        {"name": "RG2", "level": "RAID 6", "size": "160.072TB", "drives": list(range(18, 42)),
         "lds": [logical_drive(2, "archive, cold", "120.000TB", state_of(controller, 18, 41),
                               stripeSize="1MB", writePolicy="Write Through"),
                 logical_drive(3, "snapshots", "40.072TB", state_of(controller, 18, 41),
                               stripeSize="1MB", accessPolicy="Read Only")]},
        {"name": "scRG0", "level": "RAID 1", "size": "446.625GB", "drives": [42, 43],
         "lds": [logical_drive(4, "cache", "446.625GB", "Optimal", cachedLds=[1, 2])]},
    ]


def pci(record):
    names = ("address", "vendor", "device", "subsystemVendor", "subsystem", "revision")
    return dict(zip(names, record))


def controller(number):
    product, package, version, build = PRODUCTS[number]
    return {"product": product, "serial": f"TR7{number}40{number * 37 + 118:04d}",
            "pci": PCI_CONTROLLERS[number][0], "sasAddress": f"500605b0{number + 1:02x}b3c8a0",
            "memory": 2048 * (number + 1), "ports": 8 if number % 2 == 0 else 16,
            "firmware": {"package": package, "version": version, "buildTime": build,
                         "bios": "7.16.00.0_0x07100501", "driver": "07.719.03.00"},
            "rates": {"rebuild": 30, "consistencyCheck": 20 + number},
            **({"battery": {"type": "Supercapacitor", "status": "Normal", "charge": 97 - number,
                            "temperature": 30 + number}} if number != 2 else {}),
            "groups": groups(number),
            "drives": [drive(number, n) for n in range(len(USES))]}


SSDS = [{"pci": "b1:00.0", "product": "Cobalt CB2-1205", "serial": "1149D2087", "firmware": "v7.1.17",
         "size": "1205GB", "status": "Healthy", "temperature": 47, "lifeUsed": 12, "written": "318TB"},
        {"pci": "b2:00.0", "product": "Basalt P4510-4000", "serial": "BTLJ93940BQR4P0D", "firmware": "VDV10131",
         "size": "4000GB", "status": "Healthy", "temperature": 38, "lifeUsed": 3, "written": "96TB"},
        {"pci": "d8:00.0", "product": "Merlin PX172-1600", "serial": "S3RVNA0K500713", "firmware": "GPNA9B3Q",
         "size": "1600GB", "status": "Warning", "temperature": 66, "lifeUsed": 104, "written": "14802TB"}]


def write(value, indent=0):
    """JSON with an object of plain values on one line."""
    flat = json.dumps(value)
    if not isinstance(value, (dict, list)) or len(flat) <= 100 - indent or not any(
            isinstance(v, (dict, list)) for v in (value.values() if isinstance(value, dict) else value)):
        return flat
    if isinstance(value, dict) and "wwn" in value:
        return flat
    blanks = " " * (indent + 2)
    if isinstance(value, dict):
        parts = [f"{json.dumps(k)}: {write(v, indent + 2)}" for k, v in value.items()]
        return "{\n" + ",\n".join(blanks + p for p in parts) + "\n" + " " * indent + "}"
    return "[\n" + ",\n".join(blanks + write(v, indent + 2) for v in value) + "\n" + " " * indent + "]"


HOST = {"$schema": "host.schema.json",
        "description": "4 controllers, 16 RAID groups with cache LDs, 240 drives in all states, 3 PCIe SSDs",
        "tool": {"version": "7.0"},
        "pciDevices": [pci(r) for r in PCI_OTHERS + PCI_CONTROLLERS + PCI_SSDS],
        "driveModels": MODELS,
        "controllers": [controller(n) for n in range(CONTROLLERS)],
        "pcieSsds": SSDS}

print(write(HOST))
