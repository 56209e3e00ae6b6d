"""Holds docs/reference to the library: every kind of record has a page, an example and a schema; the example is written
back byte for byte; the schema takes what the library takes and refuses what it refuses."""

import copy
import json
import os
import pathlib
import re
import subprocess
import unittest

try:
    import jsonschema
except ImportError:
    jsonschema = None

RECORDS = os.environ["REFERENCE_RECORDS"]
REFERENCE = pathlib.Path(os.environ["TIDEWELL_SOURCE"]) / "docs" / "reference"
BEYOND_64_BITS = 2 ** 63
WRONG = ["text", 1.5, True, [], {}, None, BEYOND_64_BITS]


def run(*arguments, text=""):
    return subprocess.run([RECORDS, *arguments], input=text, capture_output=True, encoding="utf-8", check=True).stdout


KINDS = run("kinds").split()


def schema_of(kind):
    return json.loads((REFERENCE / "schemas" / f"{kind}.schema.json").read_text(encoding="utf-8"))


def example_of(kind):
    return (REFERENCE / "examples" / f"{kind}.json").read_text(encoding="utf-8")


def places(value, keys=()):
    """The keys that lead to each value in the document."""
    yield keys
    items = value.items() if isinstance(value, dict) else enumerate(value) if isinstance(value, list) else ()
    for key, inner in items:
        yield from places(inner, (*keys, key))


def stops(kind, document):
    """Whether the library stops at the document: a report of a snapshot with such a confidence breaks a rule."""
    return kind == "snapshot-self-reports" and f'"confidence": {BEYOND_64_BITS}' in json.dumps(document)


def variants(document):
    """The document, and the document with each value left out, or replaced by one of each type."""
    yield document
    for keys in places(document):
        for wrong in [*WRONG, ...] if keys else WRONG:
            if not keys:
                yield wrong
                continue
            changed = copy.deepcopy(document)
            inner = changed
            for key in keys[:-1]:
                inner = inner[key]
            if wrong is ...:
                del inner[keys[-1]]
            else:
                inner[keys[-1]] = wrong
            yield changed


class Reference(unittest.TestCase):
    maxDiff = None

    def test_every_kind_has_a_page_an_example_and_a_schema_and_no_other_has(self):
        self.assertEqual(sorted(KINDS), sorted(path.name.removesuffix(".json") for path in
                                               (REFERENCE / "examples").iterdir()))
        self.assertEqual(sorted(KINDS), sorted(path.name.removesuffix(".schema.json") for path in
                                               (REFERENCE / "schemas").iterdir()))
        overview = (REFERENCE / "README.md").read_text(encoding="utf-8")
        for kind in KINDS:
            page = re.search(rf"^\| `{kind}` \| \[[^]]*\]\(([a-z-]+\.md)\)", overview, re.MULTILINE)
            self.assertIsNotNone(page, kind)
            text = (REFERENCE / page[1]).read_text(encoding="utf-8")
            for file in (f"examples/{kind}.json", f"schemas/{kind}.schema.json"):
                self.assertIn(f"({file})", text)

    def test_every_page_names_every_key_of_its_schema(self):
        overview = (REFERENCE / "README.md").read_text(encoding="utf-8")
        for kind in KINDS:
            page = re.search(rf"^\| `{kind}` \| \[[^]]*\]\(([a-z-]+\.md)\)", overview, re.MULTILINE)[1]
            text = (REFERENCE / page).read_text(encoding="utf-8")
            schema = schema_of(kind)
            for part in (schema, *schema.get("$defs", {}).values()):
                for key in part.get("properties", {}):
                    with self.subTest(kind=kind, key=key):
                        self.assertIn(f"| `{key}` |", text)

    def test_every_example_is_written_back_as_it_is(self):
        for kind in KINDS:
            with self.subTest(kind=kind):
                self.assertEqual(run("again", kind, text=example_of(kind)), example_of(kind))

    @unittest.skipIf(jsonschema is None, "needs python3-jsonschema")
    def test_every_schema_is_one_and_takes_its_example(self):
        for kind in KINDS:
            with self.subTest(kind=kind):
                jsonschema.Draft202012Validator.check_schema(schema_of(kind))
                self.assertEqual(schema_of(kind)["$schema"], "https://json-schema.org/draft/2020-12/schema")
                jsonschema.Draft202012Validator(schema_of(kind)).validate(json.loads(example_of(kind)))

    @unittest.skipIf(jsonschema is None, "needs python3-jsonschema")
    def test_every_schema_takes_what_the_library_writes(self):
        for kind in KINDS:
            validator = jsonschema.Draft202012Validator(schema_of(kind))
            lines = run("random", kind, "200").split("\n")[:-1]
            self.assertEqual(len(lines), 200)
            self.assertGreater(len(set(lines)), 100)
            for line in lines:
                with self.subTest(kind=kind):
                    validator.validate(json.loads(line))

    @unittest.skipIf(jsonschema is None, "needs python3-jsonschema")
    def test_every_schema_refuses_what_the_library_refuses(self):
        for kind in KINDS:
            validator = jsonschema.Draft202012Validator(schema_of(kind))
            documents = []
            for document in variants(json.loads(example_of(kind))):
                if stops(kind, document):
                    self.assertFalse(validator.is_valid(document))
                else:
                    documents.append(document)
            lines = "".join(json.dumps(document) + "\n" for document in documents)
            verdicts = run("judge", kind, text=lines).split("\n")[:-1]
            self.assertEqual(len(verdicts), len(documents))
            taken = 0
            for document, verdict in zip(documents, verdicts):
                with self.subTest(kind=kind, document=document, verdict=verdict):
                    self.assertEqual(validator.is_valid(document), verdict == "taken")
                taken += verdict == "taken"
            self.assertTrue(0 < taken < len(documents), kind)


if __name__ == "__main__":
    unittest.main()
