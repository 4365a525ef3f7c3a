# SPDX-License-Identifier: MIT
"""What a PromQL query asks for, and whether there is such a thing."""

from __future__ import annotations

import re
from collections.abc import Iterable
from dataclasses import dataclass, field

_TOKEN = re.compile(
    r"""\s*(?:(?P<text>"(?:\\.|[^"\\])*")
        |(?P<range>\[[^]]*\])
        |(?P<number>\d[\w.]*)
        |(?P<name>[A-Za-z_:][\w:]*)
        |(?P<sign>=~|!~|!=|==|<=|>=|[-+*/%^(){},=<>]))""",
    re.VERBOSE,
)
_WORDS = {"and", "or", "unless", "bool", "offset"}
_LABEL_LISTS = {"by", "without", "on", "ignoring", "group_left", "group_right"}

# What Prometheus adds to the series of every target.
TARGET_LABELS = {"job", "instance"}


@dataclass
class Query:
    """The metrics of a query, each with the labels that it is selected by, and other labels."""

    metrics: list[tuple[str, set[str]]] = field(default_factory=list)
    labels: set[str] = field(default_factory=set)


def parse(text: str) -> Query:
    """Reads a query whose syntax is right."""
    tokens = _tokens(text)
    query = Query()
    i = 0
    while i < len(tokens):
        kind, token = tokens[i]
        following = tokens[i + 1][1] if i + 1 < len(tokens) else ""
        i += 1
        if kind != "name" or token in _WORDS:
            continue
        if token in _LABEL_LISTS and following == "(":
            close = tokens.index(("sign", ")"), i)
            query.labels |= {name for kind, name in tokens[i:close] if kind == "name"}
            i = close
        elif following == "{":
            close = tokens.index(("sign", "}"), i)
            query.metrics.append((token, {n for kind, n in tokens[i:close] if kind == "name"}))
            i = close
        elif following not in {"(", "by", "without"} and token not in _LABEL_LISTS:
            query.metrics.append((token, set()))
    return query


def samples(text: str) -> dict[str, set[str]]:
    """The metrics in a text of a scrape, each with all labels that any of its samples has."""
    found: dict[str, set[str]] = {}
    for line in text.splitlines():
        if line.startswith("#") or not line:
            continue
        name = re.match(r"[\w:]+", line)
        assert name, line
        labels = re.findall(r'[{,]\s*(\w+)="(?:\\.|[^"\\])*"', line)
        found.setdefault(name[0], set()).update(labels, TARGET_LABELS)
    return found


def complaints(
    text: str, known: dict[str, set[str]], used: Iterable[str] = ()
) -> list[str]:
    """What a query asks for that there is not; `used` are labels that its results are to have."""
    query = parse(text)
    if not query.metrics:
        return [f"no metric in {text}"]
    told = []
    for metric, selected in query.metrics:
        if metric not in known:
            told.append(f"no metric {metric}")
        told += [
            f"no label {label} of {metric}"
            for label in sorted(selected - known.get(metric, selected))
        ]
    some = set().union(*(known.get(metric, set()) for metric, _ in query.metrics))
    told += [f"no label {label} in {text}" for label in sorted({*query.labels, *used} - some)]
    return told


def _tokens(text: str) -> list[tuple[str, str]]:
    tokens = []
    position = 0
    text = text.rstrip()
    while position < len(text):
        token = _TOKEN.match(text, position)
        assert token, f"cannot read {text[position:]!r}"
        assert token.lastgroup
        tokens.append((token.lastgroup, token[token.lastgroup]))
        position = token.end()
    return tokens
