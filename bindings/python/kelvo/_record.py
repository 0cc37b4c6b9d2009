"""What the records have in common."""
from __future__ import annotations

import dataclasses
from typing import Any

from kelvo import _core

UNSET: Any = object()  #: a field that was not given has the library's default


class Record:
    """A record of named fields. Those that are not given to it have the library's defaults."""

    def __post_init__(self) -> None:
        unset = [field.name for field in dataclasses.fields(self) if getattr(self, field.name) is UNSET]  # type: ignore[arg-type]
        if unset:
            defaults = _core.defaults(type(self).__name__)
            for name in unset:
                setattr(self, name, getattr(defaults, name))
