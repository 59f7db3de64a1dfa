"""What pytest has to know of the system tests.

A class whose tests are named test_1_..., test_2_... is one story, told in steps: a step needs those
before it, whatever was asked for, and has nothing to say when one of them has failed.
"""

import os
import re
import subprocess

import pytest
from router_sandbox import PROJECT

STEP = re.compile(r"test_(\d+)_")
FAILED = pytest.StashKey()


def step_of(item):
    found = STEP.match(item.name)
    return int(found[1]) if found else None


@pytest.hookimpl(tryfirst=True)
def pytest_cmdline_main(config):
    """With "-n N" each story stays with one worker."""
    if getattr(config.option, "dist", None) == "no":
        config.option.dist = "loadscope" if config.option.numprocesses else "no"


def pytest_configure(config):
    """A step asked for by its full name: collect the story, keep the steps up to that one."""
    wanted = {}
    for index, argument in enumerate(config.args):
        *story, name = argument.split("::")
        if len(story) == 2 and STEP.match(name):
            config.args[index] = "::".join(story)
            wanted.setdefault(story[1], set()).add(name)
    config.wanted_steps = wanted


def is_wanted(config, item):
    names = config.wanted_steps.get(item.cls.__name__)
    return names is None or item.name in names


@pytest.hookimpl(hookwrapper=True, tryfirst=True)
def pytest_collection_modifyitems(config, items):
    everything = list(items)
    items[:] = [item for item in items if is_wanted(config, item)]
    yield
    last = {}
    for item in items:
        last[item.cls] = max(last.get(item.cls, 0), step_of(item) or 0)
    chosen = set(items)
    items[:] = [item for item in everything
                if item in chosen or (step_of(item) or 1000) <= last.get(item.cls, 0)]
    skip_what_cannot_run(items)


def skip_what_cannot_run(items):
    """On a developer's machine; one that decides about a change (CI) must run them all."""
    if "CI" in os.environ or all(item.path.stem == "test_style" for item in items):
        return
    check = subprocess.run([str(PROJECT / "scripts" / "router"), "check"], check=False,
                           stdin=subprocess.DEVNULL, capture_output=True, text=True)
    if check.returncode == 0:
        skip_what_needs_root(items)
        return
    for item in items:
        if item.path.stem != "test_style":
            item.add_marker(pytest.mark.skip(reason=check.stderr.strip()))


def skip_what_needs_root(items):
    """A supervisor mounts over /usr and makes control groups."""
    for item in items if os.geteuid() != 0 else []:
        if item.path.stem.startswith("test_supervision_"):
            item.add_marker(pytest.mark.skip(reason="supervisors are started by root only"))


def pytest_runtest_makereport(item, call):
    if step_of(item) and call.excinfo and not call.excinfo.errisinstance(pytest.skip.Exception):
        item.parent.stash.setdefault(FAILED, item.name)


def pytest_runtest_setup(item):
    earlier = item.parent.stash.get(FAILED, None)
    if step_of(item) and earlier:
        pytest.fail(f"the story ended with {earlier}", pytrace=False)
