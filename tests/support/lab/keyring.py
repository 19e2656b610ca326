"""Secret services: the real keyring, and ones that misbehave."""

import sys

from gi.repository import GLib

from .display import run_tool
from .process import Process

SERVICE, ACCOUNT = "com.lumiwren.app", "openai-api-key"
PASSWORD = "the-keyring-password"
_NAME = "org.freedesktop.secrets"
_ROOT = "/org/freedesktop/secrets"
_COLLECTION = "/org/freedesktop/secrets/collection/login"


class Keyring:
    """gnome-keyring with an unlocked default collection."""

    def __init__(self, desktop):
        self.desktop = desktop
        self.process = desktop.launch(["gnome-keyring-daemon", "--unlock", "--components=secrets", "--foreground"],
                                      stdin=PASSWORD.encode())
        desktop.bus.wait_for_name(_NAME)

    def store(self, key):
        run_tool(["secret-tool", "store", "--label=Lumiwren", "service", SERVICE, "account", ACCOUNT],
                 self.desktop.env, input=key)

    def lookup(self):
        """The stored key; a RuntimeError when there is none."""
        return run_tool(["secret-tool", "lookup", "service", SERVICE, "account", ACCOUNT], self.desktop.env)

    def lock(self):
        self.desktop.bus.call(_NAME, _ROOT, "org.freedesktop.Secret.Service", "Lock",
                              GLib.Variant("(ao)", ([_COLLECTION],)))

    def locked(self):
        return self.desktop.bus.get(_NAME, _COLLECTION, "org.freedesktop.Secret.Collection", "Locked")

    def close(self):
        self.process.close()


class FakeKeyring:
    """A service that owns the name and does what `behaviour` says.

    "silent" never answers a call; "dismissed" has a locked item and a prompt that the user turns down;
    "ignored" has a prompt that nobody ever answers, "stuck" one that cannot be withdrawn either; "unlocked" has a
    prompt that the user follows; "unlock-silent" answers everything but the call that would lead to a prompt.
    """

    def __init__(self, desktop, behaviour):
        helper = str(__file__).replace("keyring.py", "helpers/secret_service.py")
        self.process: Process = desktop.launch([sys.executable, helper, behaviour])
        desktop.bus.wait_for_name(_NAME)

    def prompts(self):
        return self.process.output.count("prompt")

    def close(self):
        self.process.close()
