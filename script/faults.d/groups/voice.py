"""The voice agent"""

import json
import os
import signal
import time

from groups.disk import hold_calls_on
from row import require, row
from world import (MOMENT, NEW_GATEWAY, PREFERENCES, Home, Program, ctl, install_agent, is_alive, link_to, must_serve, numbers,
                   send_link, spawn, wait_for)

PID_FILE = ".ostrelle/voice-agent.pid"


def home_with_agent(body):
    """A home whose voice agent is that shell script."""
    home = Home()
    home.configure(voice=True)
    home.write(PREFERENCES, "[General]\nautoStartVoice=true\nprojectTrackingEnabled=true\n")
    install_agent(home, body)
    return home


FORKING = """trap '' TERM
(trap '' TERM; echo $(sh -c 'echo $PPID') >> "$HOME/recorders"; while :; do sleep 1; done) &
(setsid sh -c 'echo $$ >> "$HOME/daemons"; exec sleep 60') &
while :; do sleep 1; done"""


def started(home, program):
    require(wait_for(lambda: numbers(home) and numbers(home, "recorders")), f"The agent does not start: {program.tail()}")
    return numbers(home) + numbers(home, "recorders")


@row(seconds=40, quick=True)
def agent_with_children():
    """The agent has started a recorder; both ignore TERM. The program gets TERM.

    The program is gone within a moment, agent and recorder within three seconds more, and the PID file is removed.
    """
    home = home_with_agent(FORKING)
    program = Program(home).listens()
    pids = started(home, program)
    took = program.end()
    began = time.monotonic()
    require(wait_for(lambda: not any(map(is_alive, pids)), 3), "Agent or recorder lives on")
    after = time.monotonic() - began
    require(home.read(PID_FILE) is None, "The PID file stays")
    return f"The program took {took:.1f} s, the others {after:.1f} s more."


@row(seconds=40, quick=True)
def program_killed_over_agent():
    """The same agent; the program is killed (KILL). Then it is started again.

    Agent and recorder are gone within three seconds; the next start has one agent of its own.
    """
    home = home_with_agent(FORKING)
    program = Program(home).listens()
    pids = started(home, program)
    program.kill()
    began = time.monotonic()
    require(wait_for(lambda: not any(map(is_alive, pids)), 3), "Agent or recorder lives on")
    took = time.monotonic() - began
    program = Program(home).listens()
    require(wait_for(lambda: len(numbers(home)) == 2), "The next start has no agent")
    require(wait_for(lambda: home.read(PID_FILE) == str(numbers(home)[1]).encode()), "The PID file names another process")
    program.end()
    return f"Gone {took:.1f} s after KILL; the next start had one agent."


@row(seconds=90, quick=True)
def program_killed_by_agent():
    """An agent that starts a recorder and at once kills (KILL) the program, ten times.

    The recorders are gone three seconds after the last time.
    """
    home = home_with_agent("sleep 60 & echo $! >> \"$HOME/recorders\"; kill -9 $PPID; wait")
    for count in range(1, 11):
        program = Program(home)
        require(wait_for(lambda: not program.is_running()), "The agent does not end the program")
        require(len(numbers(home, "recorders")) == count, f"The agent does not start: {program.tail()}")
    require(wait_for(lambda: not any(map(is_alive, numbers(home, "recorders"))), 3), "A recorder lives on")
    return "The ten recorders were gone."


@row(seconds=60)
def agent_killed():
    """The agent is killed, its recorder stays.

    The recorder is gone within three seconds, and the agent runs again within as many.
    """
    home = home_with_agent(FORKING)
    program = Program(home).listens()
    agent, recorder = started(home, program)
    os.kill(agent, signal.SIGKILL)
    began = time.monotonic()
    gone = restarted = 0
    while time.monotonic() - began < 3 and not (gone and restarted):
        time.sleep(0.05)
        gone = gone or not is_alive(recorder) and time.monotonic() - began
        restarted = restarted or len(numbers(home)) == 2 and time.monotonic() - began
    require(gone, "The recorder lives on")
    require(restarted, "The agent is not started again")
    program.end()
    return f"The recorder was gone after {gone:.1f} s; the agent ran again after {restarted:.1f} s."


@row(seconds=110)
def crashing_agent():
    """The agent crashes at once, six times; then it stays.

    It is started again after 1, 2, 4, 8, 16 and 30 s, not faster, and the program serves meanwhile.
    """
    home = home_with_agent('date +%s.%N >> "$HOME/times"; [ $(wc -l < "$HOME/times") -gt 6 ] && exec sleep 1000; kill -SEGV $$')
    program = Program(home).listens()
    require(wait_for(lambda: len(numbers(home)) >= 6, 50, 0.5), "It is not started again")
    must_serve("while the agent crashes")
    require(wait_for(lambda: len(numbers(home)) >= 7, 40, 0.5), "It is not started again a sixth time")
    times = [float(word) for word in home.read("times").split()]
    gaps = [later - earlier for earlier, later in zip(times, times[1:])]
    for gap, expected in zip(gaps, (1, 2, 4, 8, 16, 30), strict=True):
        require(expected <= gap + 0.05 and gap < expected + 2, f"{gap:.1f} s instead of {expected} s")
    program.end()
    return "Started again after " + ", ".join(f"{gap:.1f}" for gap in gaps) + " s."


@row(seconds=60)
def agent_floods_its_output():
    """The agent prints without end.

    The program's memory grows by less than 8 MB, its descriptors by none, it serves, and TERM ends both.
    """
    home = home_with_agent("exec yes 'all that an agent has to say'")
    program = Program(home).listens()
    require(wait_for(lambda: numbers(home)), "The agent does not start")
    time.sleep(3)
    before, calm = program.megabytes(), program.rest()
    slowest = max(must_serve("while the agent prints") for _ in range(20))
    time.sleep(5)
    grown = program.megabytes() - before
    after = program.calm_descriptors(calm)
    require(grown < 8 and after <= calm, f"{grown:.0f} MB more within 5 s; {after} descriptors, {calm} before")
    pids = numbers(home)
    took = program.end()
    require(wait_for(lambda: not any(map(is_alive, pids)), 3), "The agent lives on")
    return f"{grown:+.1f} MB; {after} descriptors, {calm} before; the slowest answer took {slowest * 1000:.0f} ms; it ended in {took:.1f} s."


@row(seconds=40)
def pid_file_of_a_stranger():
    """The PID file names a process that is none of the program's and began later than the file was written.

    The stranger lives on through a start and an end.
    """
    home = home_with_agent("exec sleep 1000")
    stranger = spawn(["sleep", "1000"])
    file = home.write(PID_FILE, str(stranger.pid))
    os.utime(file, (time.time() - 3600,) * 2)
    home.configure(voice=False)
    program = Program(home).listens()
    program.end()
    time.sleep(0.5)
    require(stranger.poll() is None, "The stranger was killed")
    return "It lives."


@row(seconds=60)
def strange_pid_files():
    """The PID file is empty, a negative number, 1, beyond every number, noise, a folder, a pipe, unreadably large.

    The program starts, has its one agent, and ends in time; process 1 lives on.
    """
    seen = []
    home = home_with_agent("exec sleep 1000")
    for name, content in {"empty": b"", "negative": b"-1", "one": b"1", "huge": b"9" * 40, "noise": b"\xff\0\n", "long": b"1" * 10000,
                          "folder": None, "pipe": ...}.items():
        file = home.file(PID_FILE)
        if file.is_dir():
            file.rmdir()
        file.unlink(missing_ok=True)
        if content is None:
            file.mkdir()
        elif content is ...:
            os.mkfifo(file)
        else:
            home.write(PID_FILE, content)
        before = len(numbers(home))
        program = Program(home).listens()
        require(wait_for(lambda: len(numbers(home)) == before + 1), f"No agent with a PID file that is {name}")
        agent = numbers(home)[-1]
        program.end()
        require(wait_for(lambda: not is_alive(agent), 4), f"The agent lives on with a PID file that is {name}")
        seen.append(name)
    return "One agent each time, and all ended: " + ", ".join(seen) + "."


@row(seconds=40)
def port_out_of_range():
    """ports.voiceAgent is 0, 70000 and -1.

    The start comes up within a moment, and TERM ends it.
    """
    slowest = 0
    for port in (0, 70000, -1, 2 ** 40):
        home = home_with_agent("exec sleep 1000")
        config = home.config()
        config["ports"]["voiceAgent"] = port
        home.write(".ostrelle/config.json", json.dumps(config))
        program = Program(home).listens()
        slowest = max(slowest, time.monotonic() - program.began)
        program.end()
    require(slowest < MOMENT, f"A start took {slowest:.1f} s")
    return f"Up after {slowest * 1000:.0f} ms at most, ended in time."


@row(seconds=40)
def agent_on_a_hanging_disk():
    """Every look at the agent's Python takes 4 s, as on a network file system that hangs; the program is to start it.

    It listens and takes a link meanwhile, the agent is started once the disk answers, and both end in time.
    """
    home = home_with_agent("exec sleep 1000")
    program = Program(home, under=hold_calls_on(home.file(".ostrelle/venv/bin/python"), 4, calls="%file")).listens()
    send_link(home, link_to(NEW_GATEWAY))
    took = time.monotonic() - program.began
    require(took < 2 * MOMENT and not numbers(home), f"It listened and took a link within {took:.1f} s only")
    must_serve("while the agent's disk hangs")
    require(wait_for(lambda: numbers(home), 30, 0.3), "The agent is not started once the disk answers")
    started_after = time.monotonic() - program.began
    ended = program.end(within=5)  # the tracer holds it
    require(wait_for(lambda: not is_alive(numbers(home)[0]), 4), "The agent lives on")
    return f"It listened and had taken a link after {took:.1f} s; the agent ran after {started_after:.0f} s; they ended within {ended:.1f} s."


def ends_over_a_hanging_disk(ask):
    home = home_with_agent("exec sleep 1000")
    program = Program(home).listens()
    require(wait_for(lambda: numbers(home) and home.file(".ostrelle/voice-agent.pid").exists(), 10), "No agent")
    spawn(hold_calls_on(home.file(".ostrelle/voice-agent.pid"), 20, program))
    time.sleep(1)
    began = time.monotonic()
    ask(home, program)
    # Who delays a call keeps its thread until that is over; what the program itself is, is a zombie before.
    require(wait_for(lambda: not is_alive(program.pid), MOMENT), "It did not end in time")
    took = time.monotonic() - began
    require(wait_for(lambda: not is_alive(numbers(home)[0]), 2), "The agent lives on")
    return f"It ended {took:.1f} s afterwards, and the agent with it."


@row(seconds=40)
def hanging_disk_at_the_end():
    """Every system call on the agent's PID file takes 20 s, and the program gets TERM.

    It and the agent are gone within a moment.
    """
    return ends_over_a_hanging_disk(lambda _, program: program.process.terminate())


@row(seconds=40)
def hanging_disk_at_quit():
    """Every system call on the agent's PID file takes 20 s, and the program is told to quit.

    It and the agent are gone within a moment.
    """
    return ends_over_a_hanging_disk(lambda home, _: ctl(home, "quit"))


@row(seconds=40)
def agent_without_python():
    """The agent's Python is missing, is no program, is a folder, or a link that leads nowhere.

    The program says so and goes on.
    """
    home = home_with_agent("exit")
    python = home.file(".ostrelle/venv/bin/python")
    for make in (lambda: None, lambda: home.write(".ostrelle/venv/bin/python", "no program", 0o755), python.mkdir,
                 lambda: python.symlink_to("/nowhere")):
        if python.is_dir():
            python.rmdir()
        python.unlink(missing_ok=True)
        make()
        program = Program(home).listens()
        require(program.wait_for("[ServiceManager]") or program.wait_for("[VoiceAgent]", 1), "No line says so")
        program.end()
    return "A line each time; the program went on and ended in time."
