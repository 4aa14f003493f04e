"""Writes"""

import json
import os
import random
import re
import time

from injection import Save
from row import FallsShort, require, row
from world import (DOCUMENTS, NEW_GATEWAY, PREFERENCES, Home, Program, install_agent, install_sessions, is_alive, link_to,
                   numbers, send_link, wait_for)

OLD_GATEWAYS = [(f"Gateway {i}", f"http://127.0.0.8:{i}") for i in range(1, 41)]
OLD_ACCOUNT, NEW_ACCOUNT, ACTIVE_ACCOUNT = (f"gateway-token:{key}" for key in (OLD_GATEWAYS[0][1], NEW_GATEWAY, "_active_"))
KNOWN_PREFERENCES = "[General]\nagents.customName.main=Ada\nautoStartVoice={}\nuseMagicDNS=false\n"
PID_FILE = ".ostrelle/voice-agent.pid"


def prepare_config(home):
    home.configure(saved=OLD_GATEWAYS)
    home.write(PREFERENCES, KNOWN_PREFERENCES.format("false") + "projectTrackingEnabled=true\n")


def judge_config(home, when):
    config = home.config()
    require(config, f"config.json cannot be understood any more, {when}")
    kept = {entry["url"] for entry in config["gateway"]["saved"]}
    lost = [url for _, url in OLD_GATEWAYS if url not in kept]
    require(not lost, f"{len(lost)} of {len(OLD_GATEWAYS)} saved gateways were lost, {when}")
    return "new" if config["gateway"]["url"] == NEW_GATEWAY else "old"


CONFIG = Save(".ostrelle/config.json", prepare_config, judge_config, [link_to(NEW_GATEWAY)])


def prepare_secrets(home):
    prepare_config(home)
    home.write(".ostrelle/secrets.json", json.dumps({OLD_ACCOUNT: "old" * 200}))


def secrets_of(home, when):
    broken = home.read(".ostrelle/secrets.json.broken")
    require(broken is None, f"secrets.json was torn and set aside, {when}")
    content = home.read(".ostrelle/secrets.json")
    require(content is not None, f"secrets.json is gone, {when}")
    try:
        secrets = json.loads(content)
    except ValueError:
        raise FallsShort(f"secrets.json is torn, {when}") from None
    require(secrets.get(OLD_ACCOUNT) == "old" * 200, f"A token that was there before is lost, {when}")
    mode = home.file(".ostrelle/secrets.json").stat().st_mode & 0o777
    require(mode == 0o600, f"secrets.json has mode {mode:o}, {when}")
    return secrets


def judge_secrets(home, when):
    secrets = secrets_of(home, when)
    return "new" if ACTIVE_ACCOUNT in secrets else "half-way, whole" if NEW_ACCOUNT in secrets else "old"


SECRETS = Save(".ostrelle/secrets.json", prepare_secrets, judge_secrets, [link_to(NEW_GATEWAY, "t0ken")])


def prepare_preferences(home):
    home.configure()
    home.write(PREFERENCES, KNOWN_PREFERENCES.format("false"), 0o644)


def judge_preferences(home, when):
    text = (home.read(PREFERENCES) or b"").decode()
    for kept in ("agents.customName.main=Ada", "useMagicDNS=false"):
        require(kept in text, f"The preference {kept} is lost, {when}")
    if "projectTrackingEnabled=true" not in text:
        return "old"
    mode = home.file(PREFERENCES).stat().st_mode & 0o777
    require(mode == 0o600, f"The preferences have mode {mode:o}, {when}")
    return "new"


PREFERENCE = Save(PREFERENCES, prepare_preferences, judge_preferences)


def old_document(key):
    return json.dumps({key: [{"id": f"old-{i}"} for i in range(300)]})


def document_save(name, mark):
    def prepare(home):
        prepare_config(home)
        home.write(DOCUMENTS[name], old_document("jobs"))
        install_sessions(jobs='{"jobs":[{"id":"1","name":"Nightly"}]}')

    def judge(home, when):
        content = home.read(DOCUMENTS[name])
        require(content is not None, f"The document is gone, {when}")
        try:
            json.loads(content)
        except ValueError:
            raise FallsShort(f"The document is torn, {when}") from None
        return "new" if mark in content else "old"

    return Save(DOCUMENTS[name], prepare, judge)


AGENTS = document_save("status", b"a0")
CRON = document_save("cron", b"Nightly")


def judge_projects(home, when):
    content = wait_for(lambda: home.read(DOCUMENTS["projects"]), 5)
    require(content, f"The document is not there, {when}")
    require(content.endswith(b"}"), f"The document is torn, {when}")
    return "new"


PROJECTS = Save(DOCUMENTS["projects"], prepare_config, judge_projects)


def prepare_voice(home):
    home.configure(voice=True)
    home.write(PREFERENCES, KNOWN_PREFERENCES.format("true") + "projectTrackingEnabled=true\n")
    install_agent(home, "exec sleep 1000")


def agents_alive(home):
    return [pid for pid in numbers(home) if is_alive(pid)]


def judge_pid_file(home, when):
    """After a start: one agent runs, and the file names it or nobody."""
    content = home.read(PID_FILE)
    require(content is None or content.isdigit(), f"The PID file is torn, {when}")
    alive = wait_for(lambda: agents_alive(home))
    require(len(alive) == 1, f"{len(alive)} voice agents run, {when}")
    wait_for(lambda: home.read(PID_FILE) == str(alive[0]).encode(), 3)
    content = home.read(PID_FILE)
    require(content in (None, str(alive[0]).encode()), f"The PID file names another process, {when}")
    return "missing" if content is None else "new"


VOICE_PID = Save(PID_FILE, prepare_voice, judge_pid_file)


@row(seconds=240)
def config_killed():
    """config.json is saved, and the program killed (KILL) before each system call of the save.

    After the next start the configuration is the old or the new one, with all saved gateways.
    """
    return CONFIG.kill_everywhere()


@row(seconds=240)
def config_failing():
    """Each system call of a save of config.json fails once (EIO, ENOSPC).

    The program goes on; nothing is left beside the file, or only until it is read next, which ends the write from it;
    the configuration is the old or the new one.
    """
    return CONFIG.fail_everywhere()


@row(seconds=60)
def disk_that_reserves_nothing():
    """No room can be reserved (EOPNOTSUPP, ENOSYS), as on some network file systems, when config.json grows.

    The new configuration is saved, and nothing is left beside it.
    """
    for error in ("EOPNOTSUPP", "ENOSYS"):
        home = CONFIG.new_home()
        program, log = CONFIG.trace(home, [], "-e", "trace=fallocate", "-e", f"inject=fallocate:error={error}")
        CONFIG.wait_until_saved(program, home)
        require(str(home.file(CONFIG.name)) in log.read_text(), "No room was asked for")
        CONFIG.must_leave_nothing(home, "after the save")
    return "Saved without it."


@row(seconds=240)
def secrets_killed():
    """secrets.json is saved, and the program killed before each system call of the save.

    After each kill only the user may read the file and what is beside it; after the next start every token that was there is
    there.
    """
    return SECRETS.kill_everywhere()


@row(seconds=240)
def secrets_failing():
    """Each system call of a save of secrets.json fails once.

    The program goes on, nothing is left beside the file, and no token that was there is lost.
    """
    return SECRETS.fail_everywhere()


@row(seconds=240)
def preferences_killed():
    """The preferences are saved, and the program killed before each system call of the save.

    After each kill what was written is for the user alone; after the next start every preference that was there is there.
    """
    return PREFERENCE.kill_everywhere()


@row(seconds=240)
def preferences_failing():
    """Each system call of a save of the preferences fails once.

    The program goes on, nothing is left beside the file, and no preference is lost.
    """
    return PREFERENCE.fail_everywhere()


@row(seconds=240)
def agents_document_killed():
    """A shorter agents' document takes the place of a longer one, and the program is killed before each system call.

    After the next start the document is the old or the new one, whole.
    """
    return AGENTS.kill_everywhere()


@row(seconds=240)
def agents_document_failing():
    """Each system call of a save of the agents' document fails once.

    The program goes on; nothing is left beside the file, or only until the next start, which ends the write from it;
    the document is the old or the new one.
    """
    return AGENTS.fail_everywhere()


@row(seconds=240)
def cron_document_killed():
    """The jobs' document is saved, and the program killed before each system call of the save.

    After the next start the document is the old or the new one, whole.
    """
    return CRON.kill_everywhere()


@row(seconds=240)
def cron_document_failing():
    """Each system call of a save of the jobs' document fails once.

    The program goes on; nothing is left beside the file, or only until the next start, which ends the write from it;
    the document is the old or the new one.
    """
    return CRON.fail_everywhere()


@row(seconds=180)
def projects_document_killed():
    """The empty projects' document is created, and the program killed before each system call of that.

    After the next start the document is there, whole.
    """
    return PROJECTS.kill_everywhere()


@row(seconds=180)
def projects_document_failing():
    """Each system call of the creation of the projects' document fails once.

    The program goes on, and after the next start the document is there, whole.
    """
    return PROJECTS.fail_everywhere()


@row(seconds=240)
def pid_file_killed():
    """The voice agent's PID file is written, and the program killed before each system call of that.

    After the next start one voice agent runs, and the file names it.
    """
    return VOICE_PID.kill_everywhere()


@row(seconds=240)
def pid_file_failing():
    """Each system call of a save of the PID file fails once.

    The program goes on with its agent, nothing is left beside the file, and the next start has one agent.
    """
    return VOICE_PID.fail_everywhere()


def calls_of(save):
    """The lines that strace writes of one save, in their order."""
    paths = save.paths()
    home = save.new_home()
    program, log = save.trace(home, paths)
    save.wait_until_saved(program, home)
    return str(home.file(save.name)), [line for line in log.read_text(errors="replace").splitlines() if " = -1 " not in line]


def first(lines, pattern, after=-1):
    return next((i for i, line in enumerate(lines) if i > after and re.search(pattern, line)), None)


def must_be_replaced_in_order(save):
    file, lines = calls_of(save)
    beside = re.escape(file) + r"[\w.-]+"
    written = first(lines, rf"\b(p?write64|write|writev)\(\d+<{beside}>")
    require(written is not None, "The new content is not written beside the old one")
    synced = first(lines, rf"\bf(data)?sync\(\d+<{beside}>", written)
    renamed = first(lines, rf"\brename(at2?)?\(.*\"{beside}\".*\"{re.escape(file)}\"", written)
    require(renamed is not None, "Nothing is renamed over the old file")
    require(synced is not None and synced < renamed, "The new file takes the old one's place before it is on the disk")
    require(first(lines, rf"\bfsync\(\d+<{re.escape(os.path.dirname(file))}>", renamed) is not None,
            "The folder is not brought to the disk after the rename")
    return "Written beside it, brought to the disk, renamed, the folder brought to the disk, in this order."


def must_be_written_in_order(save):
    file, lines = calls_of(save)
    beside = re.escape(file) + r"[\w.-]+"
    kept = first(lines, rf"\bf(data)?sync\(\d+<{beside}>")
    touched = first(lines, rf"\b(p?write64|write|fallocate|ftruncate)\(\d+<{re.escape(file)}>")
    require(touched is not None, "The file is not written in place")
    require(kept is not None and kept < touched, "The old content goes before the new one is on the disk")
    synced = first(lines, rf"\bf(data)?sync\(\d+<{re.escape(file)}>", touched)
    removed = first(lines, rf"\bunlink(at)?\(.*\"{beside}\"", touched)
    require(removed is not None, "The copy beside the file stays there")
    require(synced is not None and synced < removed, "The copy goes before the file is on the disk")
    return "A copy is on the disk before the file is touched, and goes once the file is on the disk."


@row(seconds=60, quick=True)
def secrets_power_cut():
    """The system calls of a save of secrets.json are recorded.

    A power cut between any two of them leaves a whole file: the new one is on the disk before it is renamed.
    """
    return must_be_replaced_in_order(SECRETS)


@row(seconds=60)
def preferences_power_cut():
    """The system calls of a save of the preferences are recorded.

    A power cut between any two of them leaves a whole file.
    """
    return must_be_replaced_in_order(PREFERENCE)


@row(seconds=60)
def config_power_cut():
    """The system calls of a save of config.json are recorded.

    A power cut between any two of them leaves the file, or a copy beside it, whole.
    """
    return must_be_written_in_order(CONFIG)


@row(seconds=60)
def document_power_cut():
    """The system calls of a save of the agents' document are recorded.

    A power cut between any two of them leaves the file, or a copy beside it, whole.
    """
    return must_be_written_in_order(AGENTS)


@row(seconds=120)
def killed_at_random():
    """40 times, links with tokens come one after the other until the program is killed at a random moment.

    No token, no saved gateway and no preference that was there is lost.
    """
    home = Home()
    prepare_secrets(home)
    chance = random.Random(15)
    for round_ in range(40):
        program = Program(home, link_to(f"http://127.0.0.9:{round_ + 1}", "x" * (1 + round_ % 7) * 30))
        program.listens()
        time.sleep(chance.uniform(0, 0.15))
        program.kill()
        when = f"in round {round_ + 1}"
        judge_config(home, when)
        secrets_of(home, when)
        judge_preferences(home, when)
    return "Killed 40 times; all files were whole each time."


@row(seconds=30, quick=True)
def config_behind_links():
    """config.json is a symbolic link, and a hard link elsewhere, when a link from the desktop is opened.

    It stays a link, both names show the new content, and the mode stays.
    """
    home = Home()
    prepare_config(home)
    file = home.file(".ostrelle/config.json")
    target, other = home.file("dotfiles/config.json"), home.file("dotfiles/hard.json")
    target.parent.mkdir()
    file.rename(target)
    target.chmod(0o640)
    os.link(target, other)
    file.symlink_to(target)
    program = Program(home).listens()
    send_link(home, link_to(NEW_GATEWAY))
    require(wait_for(lambda: NEW_GATEWAY in other.read_text()), "The other name shows the old content")
    require(file.is_symlink() and judge_config(home, "") == "new", "The link was replaced by a file")
    mode = target.stat().st_mode & 0o777
    require(mode == 0o640, f"The mode became {mode:o}")
    program.end()
    return "Link, hard link and mode 640 stayed; all names show the new content."
