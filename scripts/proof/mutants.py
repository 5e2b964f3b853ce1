"""Finds the places of a C++ source whose logic can be broken, and the ways to break each.

It knows the sources as clang-format leaves them. Left alone are texts, comments, what the preprocessor takes, static
assertions, enumerations and the rows of tables, and statements that only give memory back or ask for it early."""

import bisect
import re
from dataclasses import dataclass

IGNORED = re.compile(r'''
    //[^\n]* | /\*.*?\*/ | ^[ \t]*\#(?:[^\n]*\\\n)*[^\n]*
    | R"(\w*)\(.*?\)\1" | "(?:\\.|[^"\\\n])*" | (?<![0-9a-fA-F])'(?:\\.|[^'\\\n])+'
    | \bstatic_assert\([^;]*; | \b__attribute__\(\(.*?\)\)\) | \)(?:\ const)?\ =\ 0;$''', re.X | re.S | re.M)
DECLARES = re.compile(r"\b(class|struct|union|namespace|extern)\b(?!.*\))", re.S)
INITIALIZES = re.compile(r"([=,({]|\breturn|[\w>])$")
CONTROLS = re.compile(r"(\)|\b(else|do|try|const|noexcept|override|mutable)|->\s*[\w:<>*& ]+)$")

COMPARISON = re.compile(r"(?<=\s)(==|!=|<=|>=|<|>)(?=\s)")
OTHER_COMPARISONS = {"==": ["!="], "!=": ["=="], "<": ["<=", ">="], "<=": ["<", ">"],
                     ">": [">=", "<="], ">=": [">", "<"]}
LOGICAL = re.compile(r"(?<=\s)(&&|\|\|)(?=\s)")
NEGATION = re.compile(r"(?<![\w)\]])!(?=[\w(:*])")
TRUTH = re.compile(r"\b(true|false)\b")
INTEGER = re.compile(r"(?<![\w.'])(0[xX][0-9a-fA-F']+|\d[\d']*)[uUlLzZ]*(?![\w.'])")
CONDITION = re.compile(r"\b(if|while) \(")
CHOICE = re.compile(r"(?:(?<=, )|(?<=\w = )|(?<=return )|(?<=\())([\w.:>-]+(?:\([^()]*\))?)(?= \?\s)")
PARENTHESES = r"\((?:[^(){};]|\((?:[^(){};]|\((?:[^(){};]|\([^(){};]*\))*\))*\))*\)"
STATEMENT = re.compile(rf"(?<=[;{{}}:])\s+((?:[^;{{}}()]|{PARENTHESES})+;)")
ACTION = re.compile(r"(?!return\b|using\b|if\b|for\b|while\b)"
                    r"(\*?\w[\w:]*((\.|->|\(\)\.|\(\)->)\w+|\[[^\]]*\])*\s*(\(|[-+*|&]?= |<<|\+\+|--)|(\+\+|--)\w)|throw\b"
                    r"|(break|continue|return);$")
# What gives memory back or asks for it early; the sanitizers' run looks for memory that is lost.
MEMORY = re.compile(r"[\w:]*[fF]ree\w*\(|[\w.>-]*\breserve\(|va_end\(|iconv_close\(")
GUARD = re.compile(rf"(?!return\b|delete\b)(?:const )?[A-Za-z_][\w:<>, ]* (\w+)(?:{PARENTHESES})?;$", re.S)


@dataclass(frozen=True)
class Mutant:
    file: str
    begin: int
    end: int
    replacement: str
    line: int
    was: str

    def __str__(self):
        return f"{self.file}:{self.line}: {self.was} -> {self.replacement}"

    def apply(self, text):
        return text[:self.begin] + self.replacement + text[self.end:]


def blank(match):
    """The same length and lines, without what could be taken for code."""
    text = match[0]
    if text[0] in "\"'R":
        return '"' + re.sub(r"[^\n]", "_", text[1:-1]) + '"'
    return re.sub(r"[^\n]", " ", text)


def scopes(code):
    """Pairs of a position and the kind of scope from there on: code, declarations or table."""
    result, stack, header = [(0, "declarations")], ["declarations"], 0
    for match in re.finditer(r"[;{}]", code):
        if match[0] == "{":
            before = code[header:match.start()].rstrip()
            if re.search(r"\benum\b", before):
                kind = "table"
            elif DECLARES.search(before):
                kind = "declarations"
            elif INITIALIZES.search(before) and not CONTROLS.search(before):
                kind = "code" if stack[-1] == "code" else "table"
            else:
                kind = "table" if stack[-1] == "table" and not CONTROLS.search(before) else "code"
            stack.append(kind)
        elif match[0] == "}" and len(stack) > 1:
            stack.pop()
        header = match.end()
        result.append((match.end(), stack[-1]))
    return result


def closing(code, opening):
    """The position of the parenthesis that closes the one at `opening`."""
    depth = 0
    for position in range(opening, len(code)):
        depth += {"(": 1, ")": -1}.get(code[position], 0)
        if depth == 0:
            return position
    raise ValueError("unbalanced parentheses")


def condition_breaks(code):
    for match in CONDITION.finditer(code):
        begin, end = match.end(), closing(code, match.end() - 1)
        begin = max(begin, code.rfind(";", begin, end) + 1)
        condition = code[begin:end].strip()
        if " = " not in condition:
            yield begin, end, ["!({})", "true", "false"] if match[1] == "if" else ["!({})", "false"]


def statement_breaks(code):
    for match in STATEMENT.finditer(code):
        statement = match[1]
        guard = GUARD.match(statement)
        unused = guard and not re.search(rf"\b{guard[1]}\b", code[match.end():match.end() + 3000])
        if (ACTION.match(statement) and not MEMORY.match(statement)) or unused:
            yield match.start(1), match.end(1), [";"]


def breaks(code):
    """(begin, end, replacements, where) of every place; where is the kinds of scope in which it counts."""
    for match in COMPARISON.finditer(code):
        yield *match.span(), OTHER_COMPARISONS[match[1]], ("code",)
    for match in LOGICAL.finditer(code):
        yield *match.span(), ["||" if match[1] == "&&" else "&&"], ("code",)
    for match in NEGATION.finditer(code):
        yield *match.span(), [""], ("code",)
    for match in TRUTH.finditer(code):
        yield *match.span(), ["false" if match[1] == "true" else "true"], ("code", "declarations")
    for match in INTEGER.finditer(code):
        yield *match.span(), ["({} + 1)", "({} - 1)"], ("code", "declarations")
    for match in CHOICE.finditer(code):
        yield *match.span(1), ["!{}"], ("code",)
    for begin, end, replacements in condition_breaks(code):
        yield begin, end, replacements, ("code",)
    for begin, end, replacements in statement_breaks(code):
        yield begin, end, replacements, ("code",)


def places(file, text):
    """For each place of a source that can be broken: the list of its mutants."""
    code = IGNORED.sub(blank, text)
    begins, kinds = zip(*scopes(code))
    result = []
    for begin, end, replacements, where in breaks(code):
        if kinds[bisect.bisect_right(begins, begin) - 1] in where:
            was = text[begin:end]
            line = text.count("\n", 0, begin) + 1
            result.append([Mutant(file, begin, end, new.replace("{}", was.strip()), line, was.strip())
                           for new in replacements])
    return result
