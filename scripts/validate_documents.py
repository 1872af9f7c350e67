"""Validates documents against schemas; scripts/validate-documents runs it.

Arguments: the folder of the schemas, then folders with documents.
"""
import json
import pathlib
import re
import sys

from jsonschema import Draft202012Validator

KINDS = {
    "global.json": "global",
    "misc.json": "misc",
    "radio.json": "radio",
    "wps.json": "wps",
    "network.json.default": "network",
    "network.json.bridge": "network",
    "network.json.repeater": "network",
}
# Files of the 1.3 generation that stand beside the documents on a device.
NO_DOCUMENTS = {"model.json", "country.json", "backhaul.json"}


def say(text):
    sys.stderr.write("validate-documents: " + text.encode("ascii", "backslashreplace").decode() + "\n")


def without_repetition(pairs):
    members = dict(pairs)
    if len(members) != len(pairs):
        raise ValueError("a member stands there twice")
    return members


def no_constant(name):
    raise ValueError(name + " is no JSON")


def parse(content):
    try:
        text = content.decode("utf-8")
    except UnicodeDecodeError:
        text = content.decode("latin-1")
    return json.loads(text, object_pairs_hook=without_repetition, parse_constant=no_constant)


def place(error):
    return "".join("[%d]" % step if isinstance(step, int) else "." + step for step in error.absolute_path)


def faults(validator, content):
    try:
        document = parse(content)
    except ValueError as error:
        return ["no JSON: %s" % error]
    # Only the place and the rule: values may be secrets.
    return ["%s breaks the rule %s of its schema" % (place(error) or "the document", error.validator)
            for error in validator.iter_errors(document)]


def validators(schemas):
    made = {}
    for kind in set(KINDS.values()):
        schema = json.loads((schemas / (kind + ".schema.json")).read_text(encoding="utf-8"))
        Draft202012Validator.check_schema(schema)
        made[kind] = Draft202012Validator(schema)
    return made


def main(schemas, *folders):
    known = validators(pathlib.Path(schemas))
    documents = bad = 0
    seen = {}
    for folder in folders:
        in_folder = 0
        for path in sorted(pathlib.Path(folder).rglob("*.json*")):
            name = re.sub(r"^[^.]*\.(?=.*\.json)", "", path.name)
            if path.is_symlink() or not path.is_file() or name in NO_DOCUMENTS or name.endswith(".new"):
                continue
            in_folder += 1
            if name not in KINDS:
                found = ["there is no schema for a document of this name"]
            else:
                key = (KINDS[name], path.read_bytes())
                if key not in seen:
                    seen[key] = faults(known[KINDS[name]], key[1])
                found = seen[key]
            bad += bool(found)
            for fault in found:
                say("%s: %s" % (path, fault))
        if in_folder == 0:
            say("no document in " + folder)
            bad += 1
        documents += in_folder
    if bad:
        return 1
    print("validate-documents: %d documents are valid, %d of them different" % (documents, len(seen)))
    return 0


sys.exit(main(*sys.argv[1:]))
