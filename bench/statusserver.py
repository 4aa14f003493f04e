#!/usr/bin/python3 -B
"""Compares the status server with nginx (2 workers), a connection per request.

The runs of the two alternate, so that what else the machine does hits both; a figure is the median
of its runs. Pinned: servers and load share one core, which measures what a request costs. Free:
everything may run everywhere. Usage: bench/statusserver.py BUILD-DIRECTORY
"""

import os
import pathlib
import shutil
import socket
import statistics
import subprocess
import sys
import tempfile
import time

import programs

ROUNDS = 5
NGINX_CONFIGURATION = """
daemon off;
{user}
worker_processes 2;
pid {prefix}/nginx.pid;
error_log {prefix}/error.log;
events {{ worker_connections 16384; }}
http {{
    access_log off;
    sendfile on;
    tcp_nopush on;
    keepalive_timeout 0;
    default_type application/json;
    client_body_temp_path {prefix}/body;
    proxy_temp_path {prefix}/proxy;
    fastcgi_temp_path {prefix}/fastcgi;
    uwsgi_temp_path {prefix}/uwsgi;
    scgi_temp_path {prefix}/scgi;
    server {{ listen 127.0.0.1:{port} backlog=4096; root {root}; }}
}}
"""


def wait_for(port):
    for _ in range(200):
        try:
            socket.create_connection(("127.0.0.1", port), 1).close()
            return
        except OSError:
            time.sleep(0.02)
    raise SystemExit("statusserver: a server does not listen")


def document(size):
    return ("{" + " " * (size - 2) + "}").encode()


class Server:
    def __init__(self, process, port, paths):
        self.process, self.port, self.paths = process, port, paths
        wait_for(port)

    def pids(self):
        listed = pathlib.Path(f"/proc/{self.process.pid}/task/{self.process.pid}/children")
        return [str(self.process.pid), *listed.read_text().split()]

    def pin(self, cores):
        for pid in self.pids():
            subprocess.run(["taskset", "-acp", cores, pid], check=True, stdout=subprocess.DEVNULL)

    def end(self):
        self.process.terminate()
        self.process.wait()


def start_ours(build, home):
    tracker = home / ".ostrelle"
    tracker.mkdir()
    (tracker / "ostrelle-agent-tracker.json").write_bytes(document(2048))
    (tracker / "ostrelle-project-tracker.json").write_bytes(document(200 * 1024))
    port = programs.free_port()
    process = subprocess.Popen([build / "bench-status-host", str(port)], stdout=subprocess.DEVNULL,
                               env={**os.environ, "HOME": str(home)})
    return Server(process, port, {"2 KB": "/status", "200 KB": "/tracker"})


def start_nginx(prefix):
    prefix.mkdir()
    (prefix / "small.json").write_bytes(document(2048))
    (prefix / "large.json").write_bytes(document(200 * 1024))
    port = programs.free_port()
    user = "user root;" if os.geteuid() == 0 else ""
    configuration = prefix / "nginx.conf"
    configuration.write_text(
        NGINX_CONFIGURATION.format(user=user, prefix=prefix, port=port, root=prefix))
    program = shutil.which("nginx") or "/usr/sbin/nginx"
    process = subprocess.Popen([program, "-p", prefix, "-c", configuration],
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return Server(process, port, {"2 KB": "/small.json", "200 KB": "/large.json"})


def measure(build, server, size, cores, **options):
    arguments = [f"{name}={value}" for name, value in options.items()]
    answer = subprocess.run(
        ["taskset", "-c", cores, build / "bench-load", str(server.port), server.paths[size],
         "pids=" + ",".join(server.pids()), *arguments],
        check=True, capture_output=True, text=True).stdout
    return {name: float(value) for name, value in (pair.split("=") for pair in answer.split())}


def compare(build, servers, size, cores, **options):
    """The medians of alternating runs, one dictionary a server."""
    runs = [[] for _ in servers]
    for server in servers:
        server.pin(cores)
    for _ in range(ROUNDS):
        for server, figures in zip(servers, runs):
            figures.append(measure(build, server, size, cores, **options))
    return [{name: statistics.median(run[name] for run in figures) for name in figures[0]}
            for figures in runs]


def row(what, ours, other, ratio, target):
    print(f"{what:<44}{ours:>12}{other:>12}{ratio:>9}  {target}")


def ratio_row(what, ours, other, target, digits=0):
    row(what, f"{ours:.{digits}f}", f"{other:.{digits}f}", f"{ours / other:.2f}", target)


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    every_core = f"0-{os.cpu_count() - 1}"
    with tempfile.TemporaryDirectory() as scratch:
        home = pathlib.Path(scratch) / "home"
        home.mkdir()
        servers = [start_ours(build, home), start_nginx(pathlib.Path(scratch) / "nginx")]
        try:
            report(build, servers, every_core)
        finally:
            for server in servers:
                server.end()


def report(build, servers, every_core):
    row("", "ostrelle", "nginx", "ratio", "target")
    ours, other = compare(build, servers, "2 KB", "0", seconds=2)
    ratio_row("2 KB, pinned: requests/s", ours["rate"], other["rate"], "at least 1.05")
    ratio_row("2 KB, pinned: server CPU us/request", ours["cpu_us"], other["cpu_us"],
              "at most 0.95", 1)
    ours, other = compare(build, servers, "200 KB", "0", seconds=2)
    ratio_row("200 KB, pinned: requests/s", ours["rate"], other["rate"], "at least 0.93")

    ours, other = compare(build, servers, "2 KB", every_core, seconds=2)
    ratio_row("2 KB, free: 99th percentile us", ours["p99_us"], other["p99_us"], "at most 1.25")
    ratio_row("2 KB, free: requests/s", ours["rate"], other["rate"], "")
    row("2 KB, free: share of a core the load takes", f"{ours['own_cpu_share']:.2f}",
        f"{other['own_cpu_share']:.2f}", "", "below 1, or the load is what is measured")
    ours, other = compare(build, servers, "2 KB", every_core, requests=64)
    row("burst of 64: longest wait ms", f"{ours['max_us'] / 1000:.1f}",
        f"{other['max_us'] / 1000:.1f}", "", "at most 100")

    time.sleep(0.2)  # until the burst is over for both
    quiet = [measure(build, servers[0], "2 KB", every_core, clients=4, seconds=1)
             for _ in range(3)]
    held = [measure(build, servers[0], "2 KB", every_core, clients=4, seconds=1, silent=5000)
            for _ in range(3)]
    undisturbed = statistics.median(run["p99_us"] for run in quiet)
    disturbed = statistics.median(run["p99_us"] for run in held)
    print()
    print(f"5,000 silent connections: 99th percentile {disturbed:.0f} us, undisturbed "
          f"{undisturbed:.0f} us, ratio {disturbed / undisturbed:.2f} (at most 1.5)")
    # Later crowds use the memory of the first again.
    print(f"private memory per silent connection: {held[0]['silent_bytes']:.0f} bytes (at most 5120)")


main()
