"""Finds the functions of a source text: first line, that of the signature, and last line."""

import ast
import re

# Comments, preprocessor lines and texts, in which braces mean nothing.
SILENT = re.compile(r'//[^\n]*|/\*.*?\*/|R"\((?:.|\n)*?\)"|"(?:\\.|[^"\\\n])*"|(?<!\w)\'(?:\\.|[^\'\\\n])*\'|'
                    r"`(?:\\.|[^`\\])*`|^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", re.S | re.M)
SCOPE = re.compile(r"(?:template\s*<.*>\s*)?(?:@:?\w+\s+|export\s+|default\s+|public\s+|internal\s+|final\s+|typedef\s+)*"
                   r"(?:namespace|class|struct|union|enum|extern|package|interface|abstract)\b", re.S)
# A parameter list, what may stand between it and the body, or the last of the initial values.
SIGNATURE = re.compile(r"\(.*(?:[)}]|=>|\)\s*:\s*[\w.<>*]+|\)\s*(?:const|noexcept|override|mutable|->\s*[\w:<>&* ]+|\s)+)$",
                       re.S)
SHELL_FUNCTION = re.compile(r"^[\w-]+\(\) ([{(])$")


def python_functions(text):
    for node in ast.walk(ast.parse(text)):
        if isinstance(node, (ast.FunctionDef, ast.AsyncFunctionDef)):
            yield node.lineno, node.end_lineno


def shell_functions(text):
    lines = text.splitlines()
    for start, line in enumerate(lines):
        if match := SHELL_FUNCTION.match(line):
            closing = "}" if match[1] == "{" else ")"
            yield start + 1, lines.index(closing, start) + 1


def kind_of_block(statement):
    if SCOPE.match(statement):
        return "scope"
    return "function" if SIGNATURE.search(statement) else "value"


def braced_functions(text):
    """The outermost functions: a lambda counts for the one that it stands in."""
    text = SILENT.sub(lambda match: re.sub(r"[^\n]", " ", match[0]), text)
    blocks = []  # kind and first line of each open block
    statement, start, line = "", 1, 1
    for character in text:
        line += character == "\n"
        if not statement.strip():
            statement, start = "", line
        if character == "{":
            blocks.append((kind_of_block(statement.strip()), start))
        elif character == "}" and blocks:
            kind, first = blocks.pop()
            if kind == "function" and "function" not in (outer for outer, _ in blocks):
                yield first, line
        inside_value = bool(blocks) and blocks[-1][0] == "value"
        ends = character == ";" or (character in "{}" and not inside_value and not (
            character == "}" and kind == "value"))
        statement = "" if ends else statement + character


def functions(text, suffix):
    if suffix == ".py":
        return python_functions(text)
    if suffix in (".h", ".cpp", ".mjs", ".js", ".ts", ".hx", ".as"):
        return braced_functions(text)
    return shell_functions(text)
