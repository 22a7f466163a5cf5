#!/usr/bin/python3
"""Validates desired documents with an implementation of JSON Schema that shares nothing with this system's.

Reads a file of JSON lines: first the schemas, {"COMPONENT/GROUP/KEY": {"schema": ..., "mutable": true or false}}, then
one document a line. Prints "valid" or "invalid" for each document.
"""
import json
import sys

from jsonschema import Draft7Validator


def is_valid(document, validators):
    has_profile = isinstance(document, dict) and "profile" in document
    levels = [("", document["profile"] if has_profile else document)]
    for depth in range(3):
        if not all(isinstance(value, dict) for _, value in levels):
            return False
        inner = [(f"{name}/{member}", value[member]) for name, value in levels for member in value]
        if not all(any(known.startswith(name[1:] + "/" * (depth < 2)) for known in validators) for name, _ in inner):
            return False
        levels = inner
    return all(keeps(value, validators.get(name[1:])) for name, value in levels)


def keeps(value, validator):
    if validator is None:
        return False
    schema, is_mutable = validator
    return (is_mutable and value == "DELETE_DEFAULT") or schema.is_valid(value)


def main():
    with open(sys.argv[1], encoding="utf-8") as lines:
        schemas = json.loads(next(lines))
        for entry in schemas.values():
            Draft7Validator.check_schema(entry["schema"])
        validators = {name: (Draft7Validator(entry["schema"]), entry["mutable"]) for name, entry in schemas.items()}
        for line in lines:
            print("valid" if is_valid(json.loads(line), validators) else "invalid")


main()
