# SPDX-License-Identifier: MIT
"""Regular expressions and UTF conversion by the vekch library.

    >>> import vekch
    >>> [m[1] for m in vekch.find_all(r"(\\w+)=(\\d+)", "width=640, height=480")]
    ['width', 'height']
    >>> vekch.sub(r"(\\w+)=(\\d+)", "$2 $1", "width=640")
    '640 width'

Patterns and texts are both str, or both bytes. Positions in a str count its characters. A text given
as str is searched as UTF-8; in bytes, option "b" takes each byte for a character. The pattern
language is in docs/pattern-language.md, templates in docs/templates.md: "$1" is a group.
"""

import ctypes
import os
import pathlib
import struct
import threading
from functools import lru_cache
from typing import AnyStr, Callable, Generic, Iterator, List, Optional, Tuple, Union

__all__ = ["Error", "MatchLimitError", "Match", "Pattern", "compile", "find", "find_all", "split",
           "sub", "utf8_to_utf16", "utf16_to_utf8"]

_MATCH_LIMIT, _TRUNCATED = -188, 12
_LITERAL = 0x10000001
_MOST = 0x7FFFFFFF

_library = ctypes.CDLL(
    os.environ.get("VEKCH_PYTHON_MODULE", str(pathlib.Path(__file__).with_name("_vekch.so"))))
_library.vekch_python_cause.restype = ctypes.c_char_p


class Error(ValueError):
    """A pattern or a template that was refused. str() shows the cause and a caret."""

    def __init__(self, cause: str, source: Union[str, bytes], offset: int) -> None:
        self.cause = cause
        self.source = source
        self.offset = offset  # in characters of a str, bytes of bytes
        shown = source if isinstance(source, str) else source.decode("latin-1")
        start = shown.rfind("\n", 0, offset) + 1
        end = shown.find("\n", offset)
        line = shown[start:end if end >= 0 else len(shown)]
        before = "".join("\t" if c == "\t" else " " for c in line[:offset - start])
        super().__init__(f"{cause}\n  {line}\n  {before}^")


class MatchLimitError(RuntimeError):
    """The match limit ran out before it was decided whether there is a match."""


def _encoded(text: Union[str, bytes]) -> bytes:
    return text.encode("utf-8", "surrogatepass") if isinstance(text, str) else bytes(text)


def _decoded(data: bytes) -> str:
    try:
        return data.decode("utf-8", "surrogatepass")
    except UnicodeDecodeError:  # a pattern may take characters apart
        return data.decode("utf-8", "replace")


class _Text(Generic[AnyStr]):
    """A text as bytes, and how their offsets become positions."""

    def __init__(self, text: AnyStr) -> None:
        self.text = text
        self.data = _encoded(text)
        if len(self.data) > _MOST:
            raise OverflowError("a text of 2 GiB or more")
        self._plain = isinstance(text, bytes) or len(self.data) == len(text)
        self._known = (0, 0)  # an offset and its position: matches come in order

    def position(self, offset: int) -> int:
        if self._plain:
            return offset
        known, position = self._known
        if offset < known:
            known, position = 0, 0
        position += len(_decoded(self.data[known:offset]))
        self._known = offset, position
        return position

    def piece(self, start: int, end: int) -> AnyStr:
        if isinstance(self.text, bytes):
            return self.data[start:end]
        return self.text[start:end] if self._plain else _decoded(self.data[start:end])


class Match(Generic[AnyStr]):
    """A match: [0] is the whole of it, [1] what group 1 captured, None if it took no part."""

    __slots__ = ("_text", "_spans")

    def __init__(self, text: "_Text[AnyStr]", spans: List[int]) -> None:
        self._text = text
        self._spans = spans

    def __len__(self) -> int:
        return len(self._spans) // 2

    def __getitem__(self, group: int) -> Optional[AnyStr]:
        if not 0 <= group < len(self):
            raise IndexError("no such group")
        start, end = self._spans[2 * group:2 * group + 2]
        return None if start < 0 else self._text.piece(start, end)

    def groups(self) -> Tuple[Optional[AnyStr], ...]:
        return tuple(self[group] for group in range(1, len(self)))

    def span(self, group: int = 0) -> Tuple[int, int]:
        """Start and end; (-1, -1) for a group that took no part."""
        start, end = self._spans[2 * group:2 * group + 2]
        return (-1, -1) if start < 0 else (self._text.position(start), self._text.position(end))

    def start(self, group: int = 0) -> int:
        return self.span(group)[0]

    def end(self, group: int = 0) -> int:
        return self.span(group)[1]

    def __repr__(self) -> str:
        return f"<vekch.Match {self.span()} {self[0]!r}>"


class Pattern(Generic[AnyStr]):
    """A compiled pattern. Threads may share it; searches with it take turns."""

    def __init__(self, pattern: AnyStr, options: str = "", match_limit: int = 10000) -> None:
        self.pattern = pattern
        self.options = options
        self._bytes = "b" in options
        self._limit = match_limit
        self._lock = threading.Lock()
        self._first = self._compile(False)
        self._all: Optional[ctypes.Array] = None
        self.groups: int = _library.vekch_python_groups(self._first)

    def _compile(self, every: bool) -> ctypes.Array:
        source = _encoded(self.pattern)
        letters = self.options.replace("b", "").replace("g", "") + ("g" if every else "")
        zero = source.find(b"\0")
        if zero >= 0:
            raise Error("a zero byte: write \\x00", self.pattern, self._place(source, zero))
        if len(source) > 89476482:
            raise OverflowError("a pattern that is too long")
        size, offset = ctypes.c_int32(), ctypes.c_int32()
        _library.veksRegExpGetSize(source, ctypes.byref(size))
        block = (ctypes.c_uint64 * (size.value // 8))()
        status = _library.veksRegExpInit(source, letters.encode(), block, ctypes.byref(offset))
        if status != 0:
            cause = _library.vekch_python_cause(source, letters.encode(), status, offset.value)
            raise Error(cause.decode(), self.pattern, self._place(source, offset.value))
        if _library.veksRegExpSetMatchLimit(self._limit, block) != 0:
            raise ValueError("a match limit is not negative")
        _library.veksRegExpSetFormat(0 if self._bytes else 1, block)
        return block

    def _place(self, source: bytes, offset: int) -> int:
        return offset if isinstance(self.pattern, bytes) else len(_decoded(source[:offset]))

    def _search(self, data: bytes, block: ctypes.Array, room: int) -> List[int]:
        """Start and end of each match's elements, one after the other."""
        slots = self.groups + 1
        while True:
            found = (ctypes.c_int64 * (2 * room))()
            count = ctypes.c_int32(room)
            with self._lock:
                status = _library.vekch_python_find_all(data, len(data), block, found,
                                                        ctypes.byref(count))
            if status == _MATCH_LIMIT:
                raise MatchLimitError("the match limit ran out")
            if status != _TRUNCATED:
                return memoryview(found).cast("B").cast("i")[:2 * count.value].tolist()
            room = min(4 * room + slots, _MOST)

    def _check(self, text: AnyStr) -> "_Text[AnyStr]":
        if isinstance(text, str) != isinstance(self.pattern, str):
            raise TypeError("pattern and text are both str, or both bytes")
        return _Text(text)

    def find(self, text: AnyStr) -> Optional[Match[AnyStr]]:
        """The first match."""
        whole = self._check(text)
        spans = self._search(whole.data, self._first, self.groups + 1)
        return Match(whole, spans) if spans else None

    def find_all(self, text: AnyStr) -> List[Match[AnyStr]]:
        """All matches: each begins where the one before ends, or at the next character."""
        return list(self._matches(self._check(text)))

    def _matches(self, whole: "_Text[AnyStr]") -> Iterator[Match[AnyStr]]:
        if self._all is None:
            self._all = self._compile(True)
        slots = self.groups + 1
        spans = self._search(whole.data, self._all, slots * (len(whole.data) // 16 + 15))
        return (Match(whole, spans[i:i + 2 * slots]) for i in range(0, len(spans), 2 * slots))

    def sub(self, replacement: Union[AnyStr, Callable[[Match[AnyStr]], AnyStr]], text: AnyStr,
            count: int = 0) -> AnyStr:
        """The text with its matches (the first `count` of them) replaced by a template, or by what a
        function of the match returns."""
        whole = self._check(text)
        template = None if callable(replacement) else _template(_encoded(replacement), replacement)
        pieces: List[bytes] = []
        at = 0
        for match in list(self._matches(whole))[:count or None]:
            spans = match._spans
            pieces.append(whole.data[at:spans[0]])
            if template is None:
                pieces.append(_encoded(replacement(match)))  # type: ignore[operator]
            else:
                for item in template:
                    if isinstance(item, bytes):
                        pieces.append(item)
                    elif 2 * item < len(spans) and spans[2 * item] >= 0:
                        pieces.append(whole.data[spans[2 * item]:spans[2 * item + 1]])
            at = spans[1]
        pieces.append(whole.data[at:])
        joined = b"".join(pieces)
        return joined if isinstance(text, bytes) else _decoded(joined)

    def split(self, text: AnyStr) -> List[AnyStr]:
        """The pieces between the matches."""
        whole = self._check(text)
        pieces, at = [], 0
        for match in self._matches(whole):
            pieces.append(whole.piece(at, match._spans[0]))
            at = match._spans[1]
        return pieces + [whole.piece(at, len(whole.data))]

    def __repr__(self) -> str:
        return f"vekch.Pattern({self.pattern!r}, {self.options!r})"


def _template(data: bytes, source: Union[str, bytes]) -> List[Union[bytes, int]]:
    """Literal pieces and group numbers, as the library reads them."""
    size = ctypes.c_int32()
    text = ctypes.create_string_buffer(data)
    _library.veksRegExpReplaceGetSize(text, ctypes.byref(size))
    block = (ctypes.c_uint64 * (size.value // 8))()
    if b"\0" in data or _library.veksRegExpReplaceInit(text, block) != 0:
        raise Error('"$" needs a group\'s number or "&" after it, and there is no zero byte', source, 0)
    items = []
    for i in range(struct.unpack_from("I", block, 4)[0]):
        kind, value, address = struct.unpack_from("IIQ", block, 16 + 16 * i)
        start = address - ctypes.addressof(text)
        items.append(data[start:start + value] if kind == _LITERAL else value)
    return items


@lru_cache(maxsize=256)
def _cached(pattern: AnyStr, options: str) -> Pattern[AnyStr]:
    return Pattern(pattern, options)


def compile(pattern: AnyStr, options: str = "", match_limit: int = 10000) -> Pattern[AnyStr]:
    """`options` are letters: s, m, i, x as in the pattern language, and b for bytes."""
    return Pattern(pattern, options, match_limit)


def find(pattern: AnyStr, text: AnyStr, options: str = "") -> Optional[Match[AnyStr]]:
    return _cached(pattern, options).find(text)


def find_all(pattern: AnyStr, text: AnyStr, options: str = "") -> List[Match[AnyStr]]:
    return _cached(pattern, options).find_all(text)


def sub(pattern: AnyStr, replacement: Union[AnyStr, Callable[[Match[AnyStr]], AnyStr]],
        text: AnyStr, options: str = "", count: int = 0) -> AnyStr:
    return _cached(pattern, options).sub(replacement, text, count)


def split(pattern: AnyStr, text: AnyStr, options: str = "") -> List[AnyStr]:
    return _cached(pattern, options).split(text)


def utf8_to_utf16(data: bytes) -> bytes:
    """Little-endian units. Nothing is refused: a byte that is no UTF-8 becomes its own value."""
    source, units = ctypes.c_int32(len(data)), ctypes.c_int32(len(data))
    if len(data) >= _MOST:
        raise OverflowError("a text of 2 GiB or more")
    room = (ctypes.c_uint16 * (len(data) + 1))()
    _library.veksConvertUTF_8u16u(data, ctypes.byref(source), room, ctypes.byref(units), 0)
    return bytes(memoryview(room).cast("B")[:2 * units.value])


def utf16_to_utf8(data: bytes, swapped: bool = False) -> bytes:
    """`swapped` says that the units are big-endian."""
    if len(data) % 2 != 0:
        raise ValueError("half a unit at the end")
    if len(data) >= _MOST // 2:
        raise OverflowError("a text of 1 GiB or more")
    source, written = ctypes.c_int32(len(data) // 2), ctypes.c_int32(3 * len(data) // 2)
    room = ctypes.create_string_buffer(3 * len(data) // 2 + 1)
    _library.veksConvertUTF_16u8u(data, ctypes.byref(source), room, ctypes.byref(written),
                                  int(swapped))
    return room.raw[:written.value]
