#!/usr/bin/env python3
"""Trims what abidw wrote to what a program built on the library can see: exported functions and variables, the types that
they reach, and of a class its data, bases, virtual functions and exported ones.

usage: trim-abi.py FILE    (in place)
"""

import sys
import xml.etree.ElementTree as ElementTree

SCOPES = ("abi-corpus", "abi-instr", "namespace-decl", "class-decl", "union-decl", "member-type")
REFERENCES = ("type-id", "method-class-id", "naming-typedef-id", "def-of-decl-id")


def exported(element):
    return element.get("elf-symbol-id") is not None


def invisible(element, scope):
    """What no program built on the library depends on."""
    if element.tag == "member-function":
        return element.get("vtable-offset") is None and not exported(element.find("function-decl"))
    if element.tag == "data-member":
        return element.get("static") == "yes" and not exported(element.find("var-decl"))
    if element.tag in ("function-decl", "var-decl"):
        return scope.tag in ("abi-instr", "namespace-decl") and not exported(element)
    return element.tag in ("member-template", "function-template-decl", "class-template-decl")


def drop(scope, unwanted):
    """Removes the unwanted declarations of a scope and of those within it, and scopes that are empty then."""
    for element in list(scope):
        if unwanted(element, scope):
            scope.remove(element)
        elif element.tag in SCOPES:
            drop(element, unwanted)
            if len(element) == 0 and element.tag in ("abi-instr", "namespace-decl", "member-type"):
                scope.remove(element)


def references(element):
    yield from (element.get(name) for name in REFERENCES if element.get(name))
    for child in element:
        if child.tag != "member-type":
            yield from references(child)


class Reachable:
    """The types that the exported functions and variables lead to."""

    def __init__(self, corpus):
        self.parents = {child: parent for parent in corpus.iter() for child in parent}
        self.types = {}
        for element in corpus.iter():
            if element.get("id") is not None:
                self.types.setdefault(element.get("id"), []).append(element)
        self.ids = set()
        waiting = [name for element in corpus.iter() if exported(element) for name in self.around(element)]
        while waiting:
            name = waiting.pop()
            if name not in self.ids:
                self.ids.add(name)
                waiting += [other for element in self.types.get(name, []) for other in self.around(element)]

    def around(self, element):
        """What an element names, and the classes that it stands in."""
        yield from references(element)
        while (element := self.parents.get(element)) is not None:
            if element.get("id") is not None:
                yield element.get("id")

    def lacks(self, element, _scope):
        return element.get("id") is not None and element.get("id") not in self.ids


def main(path):
    tree = ElementTree.parse(path)
    drop(tree.getroot(), invisible)
    drop(tree.getroot(), Reachable(tree.getroot()).lacks)
    ElementTree.indent(tree)
    tree.write(path, encoding="unicode")


main(sys.argv[1])
