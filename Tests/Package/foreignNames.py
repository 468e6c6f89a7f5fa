#!/usr/bin/env python3
"""Prints each name that an installation puts into the programs of its users without the prefix ox or QOX, and fails
where there is one: what its headers declare or define as macros, and what its libraries export.

usage: foreignNames.py PREFIX PREPROCESSED

PREFIX        the folder of the installation
PREPROCESSED  all of its headers as the preprocessor left them, with its line markers
"""
import pathlib
import re
import subprocess
import sys

OURS = re.compile(r"(ox|QOX)")
# Forward declarations of what others own.
OTHERS = re.compile(r"(Q[A-Z]\w+|PythonQt\w+|_object|PyObject)$")
LINKER_SYMBOLS = {"_init", "_fini", "_edata", "_end", "__bss_start"}


def lines_of_ours(preprocessed, prefix):
    """Of the preprocessor's output, each line that stands in a header below the prefix, with that header."""
    header = ""
    for line in preprocessed.splitlines():
        marker = re.match(r'# \d+ "([^"]*)"', line)
        if marker:
            header = marker.group(1)
        elif header.startswith(prefix + "/include/") and not line.startswith("#"):
            yield header, line


def statements(lines):
    """The declarations outside of braces: header, text without what is in braces, and whether there was something."""
    text = ""
    start = ""
    depth = 0
    has_body = False
    for header, line in lines:
        line = re.sub(r'"(\\.|[^"\\])*"|\'(\\.|[^\'\\])*\'', '""', line)
        for character in line + "\n":
            if character == "{":
                depth += 1
                has_body = True
            elif character == "}":
                depth -= 1
            elif depth == 0:
                if not text.strip():
                    start = header
                if character != ";":
                    text += character
            is_whole = character == ";" or (character == "}" and not needs_semicolon(text))
            if depth == 0 and is_whole:
                if text.strip():
                    yield start, " ".join(text.split()), has_body
                text = ""
                has_body = False


def needs_semicolon(text):
    """Whether the closing brace is not the end of it, as it is of functions and namespaces."""
    return bool(re.match(r"\s*(template\s*<.*>\s*)?(typedef\s+)?(class|struct|union|enum)\b", text, re.S)) or "=" in text


def without_template_arguments(text):
    before = None
    while before != text:
        before = text
        text = re.sub(r"<[^<>]*>", "", text)
    return text


def is_ours(statement, has_body):
    statement = re.sub(r"__attribute__\s*\(\([^()]*(\([^()]*\))?[^()]*\)\)|alignas\s*\([^()]*\)", "", statement)
    if re.match(r"(static_assert|extern \"\"$)", statement):
        return True
    operator = re.search(r"\boperator\b\s*\W", statement)
    if operator:
        return bool(re.search(r"\b(ox|QOX)", statement))
    is_specialization = bool(re.match(r"template\s*<\s*>", statement))
    has_our_argument = bool(re.search(r"<.*\b(ox|QOX)", statement))
    plain = re.sub(r"^\s*template\b", "", without_template_arguments(statement)).strip()

    kind = re.match(r"(?:typedef\s+)?(?:class|struct|union|enum(?:\s+(?:class|struct))?|(?:inline\s+)?namespace)\s+(\w+)"
                    r"\s*(final\b|:|$)", plain)
    if kind:
        if re.match(r"enum\s+\w+\s*(:|$)", plain) and has_body:
            return False  # its values are names, too
        if is_specialization:
            return has_our_argument
        name = kind.group(1)
        return bool(OURS.match(name)) or (not has_body and bool(OTHERS.match(name)))
    alias = re.match(r"using\s+(\w+)\s*=", plain) or re.match(r"typedef\b.*?(\w+)$", plain)
    if alias:
        return bool(OURS.match(alias.group(1)) or OTHERS.match(alias.group(1)))
    name = re.search(r"([\w:~]+)\s*\(", plain) or re.search(r"([\w:]+)\s*(?:\[.*\]\s*)?(?:=.*)?$", plain)
    return bool(name and (OURS.match(name.group(1)) or (is_specialization and has_our_argument)))


def foreign_declarations(preprocessed, prefix):
    for header, statement, has_body in statements(lines_of_ours(preprocessed, prefix)):
        if not is_ours(statement, has_body):
            yield "%s declares: %s" % (pathlib.Path(header).relative_to(prefix), statement)


def foreign_macros(prefix):
    for header in sorted(pathlib.Path(prefix, "include").rglob("*.h")):
        for name in re.findall(r"^\s*#\s*define\s+(\w+)", header.read_text(), re.M):
            if not re.match(r"OX", name):
                yield "%s defines: %s" % (header.relative_to(prefix), name)


def is_ours_in_binary(symbol, is_weak):
    if symbol in LINKER_SYMBOLS:
        return True
    mangled = re.match(r"_Z(?:T[VIST]|TC|Th?n?\d+_|Tv\d+_n?\d+_|Tvn\d+_n?\d+_|GV|GR|Z)*N?[rVKRO]*(.*)", symbol)
    if not mangled:
        return False
    name = mangled.group(1)
    if re.match(r"\d+(ox|QOX)", name):
        return True
    mentions_us = bool(re.search(r"\d(ox|QOX)", name))
    if re.match(r"[a-z][a-zA-Z]", name):  # an operator
        return mentions_us
    is_of_qt_or_std = bool(re.match(r"\d+[Qq][A-Zt]\w+|S[a-z]|\d+__gnu", name))
    return is_weak and is_of_qt_or_std


def foreign_symbols(prefix):
    libraries = sorted(pathlib.Path(prefix).glob("lib*/**/libox*.so"))
    if len(libraries) != 5:
        yield "%d libraries instead of 5" % len(libraries)
    for library in libraries:
        output = subprocess.run(["nm", "-D", "--defined-only", str(library)], check=True, capture_output=True, text=True)
        for line in output.stdout.splitlines():
            kind, symbol = line.split()[-2:]
            if not is_ours_in_binary(symbol, kind in "WwVvu"):
                yield "%s exports: %s" % (library.relative_to(prefix), symbol)


def main():
    prefix, preprocessed = sys.argv[1:]
    text = pathlib.Path(preprocessed).read_text()
    declared = list(statements(lines_of_ours(text, prefix)))
    if len(declared) < 100:
        sys.exit("only %d declarations were found in the headers" % len(declared))
    foreign = list(foreign_declarations(text, prefix)) + list(foreign_macros(prefix)) + list(foreign_symbols(prefix))
    for line in foreign:
        print(line)
    return 1 if foreign else 0


if __name__ == "__main__":
    sys.exit(main())
