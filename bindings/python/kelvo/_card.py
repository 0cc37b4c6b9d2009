"""Runs and waits of a card that are made of the library's functions."""
from __future__ import annotations

import asyncio
import contextlib
import queue
import time
import typing
from typing import Any

from kelvo import _core
from kelvo._types import CardInfo

_LOOK = 0.1  # seconds after which a wait for events looks whether the connection is still up


class _Run:
    """What a run tells, in the order in which the card tells it, into `put`."""

    def __init__(self, card: _core._Card, put: typing.Callable[[tuple[str, Any]], None]) -> None:
        self.card, self.failure, self.done = card, "", False
        self.registrations = contextlib.ExitStack()
        for register, kind in ((card.on_progress, "progress"), (card.on_list_done, "done"), (card.on_list_idle, "idle")):
            self.registrations.enter_context(register(lambda value, kind=kind: put((kind, value))))  # type: ignore[misc]
        self.registrations.enter_context(card.on_error_event(lambda kind, text: put(("error", text))))

    def start(self, list: _core.List, list_id: int) -> None:
        self.card.lists.clear_pending_events()
        self.card.lists.set(list_id, list)
        self.card.lists.execute(list_id)

    def take(self, event: tuple[str, Any]) -> bool:
        """Whether the run goes on after an event. What waits would find of it is taken away."""
        kind, value = event
        if kind == "progress":
            self.card.lists.wait_for_progress(0)
        elif kind == "done":
            self.card.lists.wait_for_list_done(0)
            self.done = True
        elif kind == "error":
            self.failure = value
        else:
            self.card.lists.wait_for_list_idle(0)
            if self.failure or not self.done:
                raise _core.Error(self.failure or "The run was aborted.")
        return kind != "idle"

    def look(self) -> None:
        if not self.card.is_connected():
            raise _core.Error("ConnectionAborted")

    def end(self, ended: bool) -> None:
        """A run that is left before its end is ended: no laser goes on unwatched."""
        with contextlib.suppress(_core.Error):
            if not ended:
                self.card.lists.abort_execution()
        with contextlib.suppress(_core.Error):
            self.registrations.close()


class Card(_core._Card):
    """A connection to a card. Ends with close(), or with the block of `with`."""

    def fetch_list(self, list_id: int) -> _core.List:
        """The card's list of that id, as a new list."""
        list = self.new_list()
        self.lists.get(list_id, list)
        return list

    def run(self, list: _core.List, list_id: int = 1) -> typing.Iterator[int]:
        """Uploads a list, runs it, and yields its progress values until the card is idle again.

        Raises Error when the run fails or is aborted. Who leaves the loop early ends the run. Events that came before
        are discarded.
        """
        events: queue.SimpleQueue[tuple[str, Any]] = queue.SimpleQueue()
        run, ended = _Run(self, events.put), False
        try:
            run.start(list, list_id)
            while not ended:
                try:
                    event = events.get(timeout=_LOOK)
                except queue.Empty:
                    run.look()
                    continue
                ended = event[0] == "idle"
                run.take(event)
                if event[0] == "progress":
                    yield event[1]
        finally:
            run.end(ended)

    async def run_async(self, list: _core.List, list_id: int = 1) -> typing.AsyncIterator[int]:
        """run() for `async for`. The upload has a thread of its own meanwhile."""
        loop = asyncio.get_running_loop()
        events: asyncio.Queue[tuple[str, Any]] = asyncio.Queue()
        run, ended = _Run(self, _from_thread(loop, events.put_nowait)), False
        try:
            await loop.run_in_executor(None, run.start, list, list_id)
            while not ended:
                try:
                    event = await asyncio.wait_for(events.get(), _LOOK)
                except asyncio.TimeoutError:
                    run.look()
                    continue
                ended = event[0] == "idle"
                run.take(event)
                if event[0] == "progress":
                    yield event[1]
        finally:
            run.end(ended)

    async def wait_for_progress_async(self, timeout: float | None = None) -> int | None:
        """lists.wait_for_progress() for asyncio; who cancels it loses no value."""
        return await self._wait(self.on_progress, self.lists.wait_for_progress, timeout)

    async def wait_for_list_done_async(self, timeout: float | None = None) -> int | None:
        """lists.wait_for_list_done() for asyncio; who cancels it loses no value."""
        return await self._wait(self.on_list_done, self.lists.wait_for_list_done, timeout)

    async def wait_for_list_idle_async(self, timeout: float | None = None) -> int | None:
        """lists.wait_for_list_idle() for asyncio; who cancels it loses no value."""
        return await self._wait(self.on_list_idle, self.lists.wait_for_list_idle, timeout)

    async def _wait(self, register: typing.Callable[[typing.Callable[[int], object]], _core.Registration],
                    take: typing.Callable[[float], int | None], timeout: float | None) -> int | None:
        seconds = self.get_timeout() / 1000 if timeout is None or timeout < 0 else timeout
        end = time.monotonic() + seconds
        come = asyncio.Event()
        with register(_from_thread(asyncio.get_running_loop(), lambda value: come.set())):
            while True:
                come.clear()
                value = take(0)
                left = end - time.monotonic()
                if value is not None or left <= 0:
                    return value
                with contextlib.suppress(asyncio.TimeoutError):
                    await asyncio.wait_for(come.wait(), min(left, _LOOK))


def _from_thread(loop: asyncio.AbstractEventLoop, act: typing.Callable[[Any], object]) -> typing.Callable[[Any], None]:
    """A callback that lets a loop act; a loop that is closed by then does not mind."""
    def call(value: Any) -> None:
        with contextlib.suppress(RuntimeError):
            loop.call_soon_threadsafe(act, value)
    return call


def connect(host: str | CardInfo = "127.0.0.1", port: int = 49374) -> Card:
    """Connects to a card: to a host's name or address and a port, or to a card that was found (discover()).

    Raises Error, as "Error: Cannot open connection to ADDRESS/PORT.". To be used with `with`, or to be closed.
    """
    return Card(host, port)
