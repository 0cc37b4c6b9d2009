"""What the records have in common."""
from __future__ import annotations

import dataclasses
from typing import Any

from kelvo import _core

_UNSET: Any = object()


def unset() -> Any:
    """What stands in a field that was not given, until it has the library's default."""
    return _UNSET


class Record:
    """A record of named fields. Those that are not given to it have the library's defaults."""

    def __post_init__(self) -> None:
        unset = [field.name for field in dataclasses.fields(self) if getattr(self, field.name) is _UNSET]
        if unset:
            defaults = _core._defaults(type(self).__name__)
            for name in unset:
                setattr(self, name, getattr(defaults, name))
