#!/usr/bin/env python3
"""Writes the seed corpora of the cache-file fuzz targets (sec_files, secmaint, tik) and of
driver_packets into
corpus/. The layouts are those of store/SecData.h, store/_cache.h, store/RTSecChangeDB.h,
store/IntradayRecords.h and store/CompoundFile.cpp.
Run from anywhere: python3 tests/fuzz/make_seeds.py"""
import os
import sqlite3
import struct
import tempfile

HERE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "corpus")
SEC1_SIGNATURE, SEC2_SIGNATURE = 0x9432E105, 0x9432E204
SEC1_SIZE, SEC2_SIZE = 260, 72


def header(signature, capacity, free_count, free_head, lock_count=0):
    return struct.pack("<IIiiii", signature, 1, capacity, free_count, free_head,
                       lock_count).ljust(4096, b"\0")


def sec1(symbol, name, sec2_index, presence):
    record = bytearray(SEC1_SIZE)
    record[0:len(symbol)] = symbol
    record[20:20 + len(name)] = name
    struct.pack_into("<Qii", record, 216, presence, sec2_index, -1)
    return bytes(record)


def sec2(field41, field42):
    record = bytearray(SEC2_SIZE)
    struct.pack_into("<i", record, 0, -1)
    record[4:4 + len(field41)] = field41
    record[24:24 + len(field42)] = field42
    return bytes(record)


def free_slot(size, link):
    return bytes(size - 4) + struct.pack("<i", link)


def pair(sec1_bytes, sec2_bytes):
    return struct.pack("<I", len(sec1_bytes)) + sec1_bytes + sec2_bytes


def write(target, name, data):
    os.makedirs(os.path.join(HERE, target), exist_ok=True)
    with open(os.path.join(HERE, target, name), "wb") as out:
        out.write(data)


every_field = (1 << 60) - 2
ibm = sec1(b"IBM", b"Intl Business Machines", -1, every_field)
option = sec1(b"ESZ6 C4500", b"An option", 0, every_field)
write("sec_files", "two-symbols", pair(
    header(SEC1_SIGNATURE, 3, 1, 2) + ibm + option + free_slot(SEC1_SIZE, -1),
    header(SEC2_SIGNATURE, 2, 1, 1) + sec2(b"Dec 2026 4500", b"call") + free_slot(SEC2_SIZE, -1)))
# A name of 32 characters with no terminator, and a Sec2 index that another record holds.
write("sec_files", "unterminated-shared-index", pair(
    header(SEC1_SIGNATURE, 2, 0, -1) + sec1(b"MSFT", b"M" * 32, 0, every_field) + option,
    header(SEC2_SIGNATURE, 1, 0, -1) + sec2(b"X" * 20, b"Y" * 20)))
# Left open by a process that died, with free-list heads outside the files.
write("sec_files", "left-open-bad-heads", pair(
    header(SEC1_SIGNATURE, 1, 5, 9, lock_count=1) + ibm,
    header(SEC2_SIGNATURE, 1, 1, 7, lock_count=1) + free_slot(SEC2_SIZE, 3)))
write("sec_files", "empty", b"")

RESET_MARKER = 0x4D4E5400


def change(symbol, time, kind):
    return symbol.ljust(16, b"\0") + struct.pack("<I", time) + kind + bytes(range(35))


def secmaint(signature, count, slots, timestamp, records):
    body = b"".join(records)
    return (struct.pack("<IIIi", signature, count, slots, timestamp).ljust(256, b"\0")
            + body.ljust(slots * 56, b"\0"))


write("secmaint", "fresh", bytes(4096))
write("secmaint", "reset-marker", secmaint(RESET_MARKER, 0, 8, 0, []))
write("secmaint", "sorted", secmaint(0, 3, 8, 1234, [
    change(b"A", 5, b"N"), change(b"IBM", 10, b"S"), change(b"IBM", 20, b"N")]))
write("secmaint", "count-beyond-slots", secmaint(0, 500, 2, -1, [
    change(b"IBM", 1, b"N"), change(b"MSFT", 2, b"N")]))


def block(first, last, records):
    return struct.pack("<IIIII", 2, first, last, len(records), 0) + b"".join(records)


def contents(entries):
    return struct.pack("<II", 1, len(entries)) + b"".join(
        struct.pack("<IIII", first, last, count, 0) for first, last, count in entries)


def tik(streams):
    """A .tik database holding `streams`: (storage, name, data) rows."""
    with tempfile.TemporaryDirectory() as scratch:
        path = os.path.join(scratch, "seed.tik")
        db = sqlite3.connect(path)
        db.execute("CREATE TABLE stream(storage TEXT, name TEXT, data BLOB, "
                   "PRIMARY KEY(storage, name))")
        db.executemany("INSERT INTO stream VALUES (?, ?, ?)", streams)
        db.commit()
        db.close()
        with open(path, "rb") as f:
            return f.read()


ticks = [struct.pack("<Iif", t, t % 100, 100.0 + t % 7) + b"\0" for t in (1010, 1005, 1000)]
bars = [struct.pack("<Iiffff", t, 50, 1.0, 2.0, 3.0, 0.5) for t in (1080, 1020)]
write("tik", "one-block-each", tik([
    ("T", "Contents", contents([(1000, 1010, 3)])), ("T", "%x" % 1000, block(1000, 1010, ticks)),
    ("M", "Contents", contents([(1020, 1080, 2)])), ("M", "%x" % 1020, block(1020, 1080, bars))]))
# A block whose header disagrees with the index, one whose length does, and one overlapping.
write("tik", "disagreeing-blocks", tik([
    ("T", "Contents", contents([(1000, 1010, 3), (2000, 2010, 2), (2005, 2020, 1)])),
    ("T", "%x" % 1000, block(1000, 1010, ticks[:2])),
    ("T", "%x" % 2000, block(2000, 2010, ticks)[:-5])]))
# Records oldest first, and one outside its block's span: such blocks are not served.
write("tik", "records-out-of-place", tik([
    ("T", "Contents", contents([(1000, 1010, 3), (2000, 2010, 1)])),
    ("T", "%x" % 1000, block(1000, 1010, ticks[::-1])),
    ("T", "%x" % 2000, block(2000, 2010, ticks[:1]))]))
write("tik", "not-a-database", b"SQLite format 3\0" + bytes(84))

# driver_packets: steps of DriverPacketFuzz.cpp (kind, then what the kind reads).
TIMER = b"\x04"


def quote(status, field, type_index, value, row=None):
    head = b"\x00" if row is None else b"\x01" + bytes([row])
    return head + bytes([status & 0xFF, field, type_index]) + value.ljust(39, b"\0")[:39]


def eod(flags, records):
    return b"\x02" + bytes([len(records), flags & 0xFF]) + b"".join(
        struct.pack("<IIffffi", date, 0, 10.0, 11.0, 12.0, 9.0, value) for date, value in records)


def packet(type_index, is_new, records):
    return b"\x03" + bytes([type_index, is_new, len(records)]) + b"".join(records)


day = 86400
write("driver_packets", "quotes-and-rows",
      quote(0, 2, 0, b"Intl Business") + quote(0, 5, 2, struct.pack("<f", 101.5))
      + quote(0, 0, 0, b"") + TIMER + quote(0, 1, 0, b"MSFT", row=1)
      + quote(0, 0, 0, b"", row=1) + quote(-2, 3, 3, b"", row=2) + TIMER)
write("driver_packets", "eod-batches",
      eod(1, [(20000, 5), (20001, 0), (20001, 7)]) + TIMER + eod(0, [(20002, 1)]) + eod(-1, [])
      + TIMER)
write("driver_packets", "intraday",
      packet(1, 0, [struct.pack("<Iiffff", 2 * day + 60 * m, 10, 1, 2, 3, 0.5)
                    for m in (580, 575, 570)]) + TIMER
      + packet(0, 1, [struct.pack("<Iif", 2 * day + 60 * 585 + s, 1, 2.0) + b"\0"
                      for s in (1, 2, 3)]) + TIMER + b"\x05" + TIMER)
