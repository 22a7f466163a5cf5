#!/usr/bin/env python3
"""What the libraries export is what the public headers declare: no name more, none fewer, each as often as it is
overloaded. And no declared function is without documentation.

usage: check-exports.py XML-FOLDER LIBRARY=HEADER-FOLDER...    (the XML is Doxygen's of the headers)
"""

import collections
import pathlib
import re
import subprocess
import sys
import xml.etree.ElementTree as ElementTree

OF_A_CLASS = re.compile(r"(?:vtable|typeinfo|typeinfo name) for (.*)")
IN_CLASS = re.compile(r"=\s*(default|delete|0)$")
# What every class has, and what it says it has not.
NEEDS_NO_WORDS = re.compile(r"::~|(?:^|::)(\w+)::\1\(\)$|=\s*delete$")


class Headers:
    """The declarations of one folder of headers."""

    def __init__(self, xml_folder, folder):
        self.folder = folder
        self.classes = set()
        self.names = set()  # inline ones included, which may be exported and need not be
        self.overloads = collections.Counter()
        self.undocumented = []
        seen = set()
        for file in sorted(xml_folder.glob("*.xml")):
            for compound in ElementTree.parse(file).getroot().iter("compounddef"):
                is_class = compound.get("kind") in ("class", "struct")
                if is_class and self.holds(compound):
                    self.classes.add(compound.findtext("compoundname"))
                for member in compound.iter("memberdef"):
                    wanted = member.get("kind") == "function" or member.get("kind") == "variable" and not is_class
                    if wanted and self.holds(member) and member.get("id") not in seen:
                        seen.add(member.get("id"))
                        self.add(member)

    def holds(self, element):
        location = element.find("location")
        return location is not None and location.get("file").startswith(self.folder + "/")

    def add(self, member):
        name = re.search(r"[^ *&]*$", member.findtext("definition")).group()
        self.names.add(name)
        if member.get("kind") == "variable":
            self.overloads[name] += member.find("initializer") is None
            return
        signature = name + member.findtext("argsstring")
        self.overloads[name] += out_of_line(member)
        if not documented(member) and not NEEDS_NO_WORDS.search(signature):
            self.undocumented.append(signature)


def documented(member):
    return any(len(member.find(part)) for part in ("briefdescription", "detaileddescription"))


def out_of_line(member):
    is_template = member.find("templateparamlist") is not None
    return member.get("inline") == "no" and not is_template and not IN_CLASS.search(member.findtext("argsstring"))


def exports_of(library):
    """Qualified names with the number of their overloads, and the classes whose type information is exported."""
    listing = subprocess.run(["nm", "-DC", "--defined-only", library], check=True, capture_output=True, text=True)
    names, classes = set(), set()
    for line in listing.stdout.splitlines():
        kind, name = line[17:].split(" ", 1)
        name = re.sub(r"@@?\w+$", "", name).replace("[abi:cxx11]", "")
        if match := OF_A_CLASS.match(name):
            classes.add(match.group(1))
        elif kind != "A":  # the name of a version
            names.add(name)
    return collections.Counter(name.split("(")[0] for name in names), classes


def differences(library, headers):
    overloads, classes = exports_of(library)
    for name in sorted(set(overloads) - headers.names):
        yield f"{library} exports {name}, which no header in {headers.folder}/ declares"
    for name, count in sorted(headers.overloads.items()):
        if overloads[name] < count:
            yield f"{library} exports {overloads[name]} of the {count} {name} that {headers.folder}/ declares"
    for name in sorted(classes - headers.classes):
        yield f"{library} exports type information of {name}, which no header in {headers.folder}/ declares"
    for name in headers.undocumented:
        yield f"{headers.folder}/: {name} is not documented"


def main(arguments):
    findings = []
    for pair in arguments[1:]:
        library, folder = pair.split("=")
        headers = Headers(pathlib.Path(arguments[0]), folder)
        if not headers.overloads:
            findings.append(f"{arguments[0]} describes no header in {folder}/")
        findings += differences(library, headers)
    print("\n".join(findings) or "exports: the headers' names, all of them and no others")
    return 1 if findings else 0


sys.exit(main(sys.argv[1:]))
