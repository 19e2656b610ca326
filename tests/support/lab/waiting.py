"""Waiting for conditions."""

import time


def wait_until(condition, what, timeout=15.0, interval=0.005):
    """Returns the first true value of `condition()`; TimeoutError names `what` after `timeout` seconds."""
    deadline = time.monotonic() + timeout
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise TimeoutError(f"waited {timeout:g} s for {what}")
        time.sleep(interval)


def stays_false(condition, duration, interval=0.02):
    """True when `condition()` was false all through `duration` seconds: for things that must not happen."""
    deadline = time.monotonic() + duration
    while time.monotonic() < deadline:
        if condition():
            return False
        time.sleep(interval)
    return True
