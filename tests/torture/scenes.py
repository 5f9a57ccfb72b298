"""What the torture does: a verb of vtv, the TV that it finds, and what a failure may leave of it."""

import dataclasses
import json

WIZARD = "org.nemra.wizard"

SCENARIO = """\
title = "a switch is turned over"
model = "farfield-eu"

[[step]]
press = "voice-wake-up"
expect.page.voice-wake-up = { value = "off" }
"""

POLICY = json.dumps([{"VAAppId": "com.vantelo.tv.voice-instant-app", "VAFFSupport": True, "VAId": "ORVIK2",
                      "VAName": "Orvik", "VAOrder": 1}])

# Much that differs from the model: settings of both kinds, lists, files in folders of their own.
DUMP = json.dumps({
    "format": "vtv-dump", "version": 1,
    "settings": {"db/comss/cisblock": 1, "db/torture/new": "x", "memory/torture/new": 3,
                 "db/menu_widget/language": "de_DE", "db/menu/voice/mva_list": POLICY},
    "features": {"com.vantelo/featureconf/recorder.microphone_type": 0},
    "consents": {"tnc": True, "pp": False}, "signed_in": True, "network": "disconnected",
    "always_on_voice": {"com.vantelo.tv.voice-instant-app": 1},
    "files": ["share/.voice/alexa_login_success", "share/torture/mark"]})


@dataclasses.dataclass
class Scene:
    """One verb on the TV "tv". The working folder is empty but for what is at hand."""

    name: str
    command: list  # of vtv
    model: str = "farfield-eu"  # "": there is no TV
    before: list = dataclasses.field(default_factory=list)  # commands that furnish the TV
    each: list = dataclasses.field(default_factory=list)  # commands before each run: no process can be copied
    at_hand: dict = dataclasses.field(default_factory=dict)  # file names and texts
    # What a failure may leave: all or nothing, or each key as it was or as it shall be.
    atomic: bool = True
    again: int = 0  # the exit code when it is said once more where it has been done
    launches: bool = False  # applications, which go on by themselves
    ends: bool = False  # its applications end by themselves
    turns: bool = False  # said once more, it takes back what it did
    tells: str = ""  # is in what it prints with 0, where that depends on the moment or tells of a failure itself
    asks: bool = False  # the provider, and prints its answers
    moments: bool = False  # it is killed at random moments, too
    loads: bool = False  # the calls that all verbs begin with are struck as well: those of the program's loader


SCENES = [
    Scene("new", ["new", "tv", "--model", "ptt-passthrough-us"], model="", again=1),
    Scene("set", ["set", "db/comss/cisblock", "int", "2", "--tv", "tv"], loads=True),
    Scene("press-switch", ["press", "voice-wake-up", "--tv", "tv"], atomic=False, asks=True,
          turns=True),
    Scene("press-list", ["press", "voice-assistant", "--choose", "2", "--ok", "--tv", "tv"],
          model="ptt-passthrough-us", atomic=False, asks=True),
    Scene("press-launch", ["press", "onboarding", "--tv", "tv"], model="out-of-the-box-us", atomic=False, asks=True,
          launches=True),
    Scene("press-auto", ["press", "onboarding", "--tv", "tv"], model="out-of-the-box-us", atomic=False, asks=True,
          again=1, launches=True, ends=True, tells="opens:",
          before=[["app", "mode", "auto", "--tv", "tv"]]),
    Scene("press-recorded", ["press", "onboarding", "--tv", "tv"], model="out-of-the-box-us", atomic=False, asks=True,
          before=[["app", "mode", "record", "--tv", "tv"]]),
    Scene("load", ["load", "dump.json", "--tv", "tv"], moments=True, at_hand={"dump.json": DUMP}),
    Scene("restore", ["restore", "was.json", "--tv", "tv"], moments=True,
          before=[["snapshot", "was.json", "--tv", "tv"], ["load", "dump.json", "--tv", "tv"]],
          at_hand={"dump.json": DUMP}),
    Scene("import", ["import", "dump.json", "tv"], model="", moments=True, at_hand={"dump.json": DUMP}, again=1),
    Scene("power-cycle", ["power-cycle", "--tv", "tv"], model="out-of-the-box-us", atomic=False, moments=True,
          before=[["set", "memory/torture/a", "int", "1", "--tv", "tv"],
                  ["set", "memory/torture/b", "string", "x", "--tv", "tv"],
                  ["fault", "sso_get_login_state", "--tv", "tv"]],
          each=[["press", "onboarding", "--tv", "tv"]]),
    Scene("app-finish", ["app", "finish", WIZARD, "--tv", "tv"], model="out-of-the-box-us", atomic=False, again=3,
          each=[["press", "onboarding", "--tv", "tv"]]),
    Scene("policy-publish", ["policy", "publish", "policy.json", "--tv", "tv"], at_hand={"policy.json": POLICY}),
    Scene("run", ["run", "scenario.toml", "--junit", "results.xml"], model="", at_hand={"scenario.toml": SCENARIO}),
    Scene("copy", ["copy", "tv", "other"], again=1),
    Scene("rename", ["rename", "tv", "other"], again=3),
    Scene("remove", ["remove", "tv"], again=3),
    Scene("dump", ["dump", "out.json", "--tv", "tv"], at_hand={"out.json": "old"}),
    Scene("show", ["show", "--json", "--tv", "tv"], asks=True, tells="launches.jsonl"),
    Scene("get", ["get", "db/comss/countrycode", "--tv", "tv"]),
    Scene("log", ["log", "--tv", "tv"], before=[["press", "voice-wake-up", "--tv", "tv"]]),
    Scene("trace", ["trace", "--tv", "tv"],
          before=[["trace", "on", "--tv", "tv"], ["press", "voice-wake-up", "--tv", "tv"]]),
    Scene("trace-clear", ["trace", "--clear", "--tv", "tv"], atomic=False,
          before=[["trace", "on", "--tv", "tv"], ["press", "voice-wake-up", "--tv", "tv"]]),
    Scene("launches", ["app", "list", "--launches", "--tv", "tv"], model="out-of-the-box-us",
          before=[["app", "mode", "record", "--tv", "tv"], ["press", "onboarding", "--tv", "tv"]]),
    Scene("list", ["list", "--json"], tells='"problem"'),
    Scene("record", ["set", "db/comss/cisblock", "int", "2", "--record", "mine.toml", "--tv", "tv"], atomic=False,
          turns=True),
]
