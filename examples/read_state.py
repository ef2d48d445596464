#!/usr/bin/env python3
"""Shows a saved state of the engine, binary or XML, with nothing but docs/file-formats.md to go by.

    examples/read_state.py STATE

prints one line for each value, "name value", and one for each itemset in the order of the file:

    set 1 3 8 | count 12 TID 7 maxMissed 1 adjacent 9 11
"""
import struct
import sys
import xml.etree.ElementTree

DICTIONARY_SETTINGS = ("NumberOfFixedSets InitialSetSize InitialBoundarySize InitialBoundarySearchSize "
                       "InitialHashtableSet23Size InitialRulesSize ReportFrequency MaxInStoreSets "
                       "LeaveInMainStoreCount").split()
CARMA_SETTINGS = "MaxNumSigmaChunks ReportFreqPhaseI ReportFreqPhaseII RemoveSmallFreq".split()
DICTIONARY = "maxLevel spillLevel inStoreCount maxInStoreSets leaveInMainStoreCount fixedSetCount".split()
DESCRIPTORS = {"SC": "SetCounter", "CS": "CarmaSetDescriptor", "LS": "LatticeSetDescriptor"}


class Binary:
    """Takes a binary state apart: a tag opens an object, and nothing closes it."""

    def __init__(self, data):
        self.data, self.at = data, 0

    def take(self, size):
        if self.at + size > len(self.data):
            sys.exit("the state ends too early")
        self.at += size
        return self.data[self.at - size:self.at]

    def start(self, name, tag):
        if self.take(len(tag)) != tag:
            sys.exit(f"no {name} at byte {self.at - len(tag)}")

    def start_descriptor(self):
        tag = self.take(2).decode("latin-1")
        if tag != "SC":
            self.start("descriptor", b"D")  # CSD, LSD
        return DESCRIPTORS[tag]

    def int(self):
        return struct.unpack("<i", self.take(4))[0]

    def double(self):
        return struct.unpack("<d", self.take(8))[0]

    def flag(self):
        return int(self.take(1) == b"1")

    def spill_file(self):
        return self.take(self.int())[:-1].decode("latin-1")

    def lattice_built(self):
        return 0  # a binary state is always one of phase I

    def end(self):
        pass


class Xml:
    """The same from an XML state: objects within objects, values in a fixed order."""

    def __init__(self, data):
        self.open = [iter(xml.etree.ElementTree.fromstring(data))]

    def start(self, name, tag=None):
        element = next(self.open[-1])
        if (element.tag, element.get("name")) != ("Obj", name):
            sys.exit(f"{element.get('name')} instead of {name}")
        self.open.append(iter(element))

    def start_descriptor(self):
        element = next(self.open[-1])
        self.open.append(iter(element))
        return element.get("name")

    def value(self):
        return next(self.open[-1]).get("value")

    def int(self):
        return int(self.value())

    def double(self):
        text = self.value()
        return -sys.float_info.max if text == "Missing" else float(text)

    flag = lattice_built = int

    def spill_file(self):
        return f"({self.int() - 1} characters, not stored: {self.value()})"

    def end(self):
        self.open.pop()


def show_set(state):
    """An itemset's record and its descriptor's."""
    state.start("ItemSet", b"IS:\0")
    items = [state.int() for _ in range(state.int())]
    state.end()
    kind = state.start_descriptor()
    fields = {"count": state.int(), "TID": state.int()}
    if kind != "SetCounter":
        fields["maxMissed"] = state.int()
    if kind == "LatticeSetDescriptor":
        fields["adjacent"] = " ".join(str(state.int()) for _ in range(state.int()))
    state.end()
    print(" ".join(["set", *map(str, items), "|", *(f"{name} {value}" for name, value in fields.items())]).rstrip())


def show(state):
    is_xml = isinstance(state, Xml)
    if is_xml:
        state.start("CarmaAssociationAlgorithm")

    state.start("CarmaSettings", b"CS")
    state.start("AssociationAlgorithmSettings", b"AAS")
    print("MaxTranLength", state.int())
    print("MaxLengthSet", state.int())
    state.start("DictionarySettings", b"DS")
    print("SpillFileName", state.spill_file())
    for name in DICTIONARY_SETTINGS:
        print(name, state.int())
    state.end()
    state.end()
    for name in CARMA_SETTINGS:
        print(name, state.int())
    state.end()

    state.start("SetDictionary", b"SD")
    print("latticeBuilt", state.lattice_built())
    values = {name: state.int() for name in DICTIONARY}
    for name, value in values.items():
        print(name, value)
    print("diskSpill", state.flag())
    print("bitsetOff", state.flag())
    for level in range(values["maxLevel"] + 1):
        state.start("HashtablePair", b"HT")
        entries = state.int()
        print("level", level, "entries", entries)
        for _ in range(entries):
            if is_xml:
                state.start("ISCPair")
            show_set(state)
            state.end()
        state.end()
    state.end()

    print("setsRemoved", state.int())
    print("transactionsSeen", state.int())
    print("currentSupport", state.double())
    print("supportCount", state.double())
    print("peakSets", state.int())

    state.start("CeilArray", b"CA")
    print("average", state.double())
    print("total", state.int())
    for chunk in range(state.int()):
        if state.int() != chunk:
            sys.exit("a chunk is out of order")
        print("chunk", chunk, "count", state.int(), "ceiling", state.double())
    state.end()

    print("averageExtension", state.double())
    for name in ("maxExtension", "longestCandidate", "longAdded"):
        print(name, state.int())


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    with open(sys.argv[1], "rb") as file:
        data = file.read()
    show(Binary(data) if data.startswith(b"CS") else Xml(data))


if __name__ == "__main__":
    main()
