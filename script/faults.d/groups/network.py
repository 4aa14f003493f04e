"""The network"""

import contextlib
import json
import os
import resource
import socket
import struct
import subprocess
import threading
import time

from loopback import set_loopback
from row import NotHere, require, row
from world import (DOCUMENTS, STATUS_PORT, Home, Program, another_user, connections, document, exchange, freeze, get,
                   install_tool, must_serve, send_link, thaw, timed_get, wait_for)

MEGABYTE = 1 << 20


def serving(document_bytes=0, limits=()):
    home = Home()
    home.configure()
    install_tool("duskrell", "exit 1")
    home.write(DOCUMENTS["status"], json.dumps({"agents": {}, "filler": "x" * document_bytes}))
    return home, Program(home, limits=limits).listens()


def connect(rcvbuf=None):
    client = socket.socket()
    if rcvbuf:
        client.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, rcvbuf)
    client.settimeout(10)
    client.connect(("127.0.0.1", STATUS_PORT))
    return client


def raise_own_limit(wanted):
    """As many descriptors as that, or as the system lets us have."""
    hard = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
    resource.setrlimit(resource.RLIMIT_NOFILE, (min(wanted + 200, hard), hard))
    return min(wanted, hard - 200)


def many(count, make=connect):
    """As many open connections as can be had."""
    found = []
    for _ in range(count):
        with contextlib.suppress(OSError):
            found.append(make())
    return found


def kernel_megabytes():
    """What the system keeps for all connections, those of other programs too."""
    with open("/proc/net/sockstat") as file:
        line = next(line for line in file if line.startswith("TCP:"))
    return int(line.split()[-1]) * resource.getpagesize() / MEGABYTE


def reset(client):
    client.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
    client.close()


@row(seconds=60, quick=True)
def descriptors_used_up():
    """With a limit of 256 descriptors, 1,000 silent clients connect and stay.

    The program goes on, starts its tools, answers new clients, and all is as before once the silent ones have gone.
    """
    home = Home()
    home.configure()
    install_tool("duskrell", 'date >> "$HOME/runs"; exit 1')
    home.write(DOCUMENTS["status"], '{"agents":{}}')
    program = Program(home, limits=[(resource.RLIMIT_NOFILE, 256)]).listens()
    calm = program.rest()
    clients = many(raise_own_limit(1000))
    program.must_run("with 1,000 silent clients")
    slowest = max(must_serve("beside them") for _ in range(20))
    most = program.descriptors()
    require(most <= 256 * 3 // 4, f"{most} of 256 descriptors are in use")
    send_link(home, "ostrelle://config?gatewayBaseURL=http://127.0.0.9:1")
    require(wait_for(lambda: "127.0.0.9" in json.dumps(home.config())), "A link is not taken")
    for client in clients:
        client.close()
    after = program.calm_descriptors(calm + 5)
    require(after <= calm + 5, f"{after} descriptors, {calm} before")
    program.end()
    return f"{len(clients)} connected, {most} descriptors in use at most; the slowest answer took {slowest * 1000:.0f} ms; {after} afterwards, {calm} before."


@row(seconds=90)
def ten_thousand_silent_clients():
    """10,000 clients connect and say nothing; others ask meanwhile.

    Everybody who asks is answered within a moment; the silent ones are dropped; memory and descriptors come back.
    """
    _, program = serving()
    wanted = raise_own_limit(10000)
    if wanted < 10000:
        raise NotHere(f"Only {wanted} descriptors are to be had here")
    calm, memory = program.rest(), program.megabytes()
    clients = many(wanted)
    slowest = max(must_serve("beside 10,000") for _ in range(50))
    most = program.megabytes()
    after = program.calm_descriptors(calm + 5, 15)
    require(after <= calm + 5, f"{after} descriptors 15 s later, {calm} before")
    for client in clients:
        client.close()
    program.end()
    return (f"The slowest of 50 answers took {slowest * 1000:.0f} ms; {most - memory:+.1f} MB meanwhile; "
            f"{after} descriptors within 15 s, {calm} before.")


@row(seconds=60)
def resets():
    """10,000 clients ask and reset the connection at once, before or while they are answered.

    The program goes on, and its descriptors are what they were.
    """
    _, program = serving(MEGABYTE // 2)
    calm = program.rest()
    for number in range(10000):
        with contextlib.suppress(OSError):
            client = connect()
            if number % 3:
                client.sendall(b"GET /status HTTP/1.1\r\n\r\n"[:24 if number % 2 else 10])
            reset(client)
    took = must_serve("after 10,000 resets")
    after = program.calm_descriptors(calm + 3)
    require(after <= calm + 3, f"{after} descriptors, {calm} before")
    program.end()
    return f"/health took {took * 1000:.0f} ms afterwards; {after} descriptors, {calm} before."


@row(seconds=60)
def unread_answers():
    """500 clients ask for a document of 0.9 MB and never read; others ask meanwhile.

    Program and kernel keep no more than 100 MB for them, and give it back; the others are answered.
    """
    _, program = serving(900_000)
    raise_own_limit(500)
    program.rest()
    before, kernel_before = program.megabytes(), kernel_megabytes()

    def ask():
        client = connect(rcvbuf=4096)
        client.sendall(b"GET /status HTTP/1.1\r\n\r\n")
        return client

    clients = many(500, ask)
    slowest = max(must_serve("beside clients that do not read") for _ in range(20))
    most, kernel = program.megabytes() - before, kernel_megabytes() - kernel_before
    for client in clients:
        client.close()
    wait_for(lambda: program.megabytes() < before + 20, 15, 0.5)
    after = program.megabytes() - before
    program.end()
    seen = f"{most:+.0f} MB in the program, {kernel:+.0f} MB in the kernel; {after:+.1f} MB afterwards"
    require(most < 100 and kernel < 100 and after < 20, seen)
    return f"{seen}; the slowest answer took {slowest * 1000:.0f} ms."


@row(seconds=60)
def unread_answers_of_many_contents():
    """120 clients ask for a document of 5 MB and never read; it is another one each time, so no two of them share it.

    The answers take 64 MB at most, and what the program needs to read one; the slowest make way, whoever reads gets all of it,
    and the memory comes back.
    """
    home, program = serving(5 * MEGABYTE)
    raise_own_limit(200)
    program.rest()
    before, idle = program.megabytes(), connections()
    clients, most = [], 0
    for turn in range(120):
        home.write(DOCUMENTS["status"], json.dumps({"agents": {}, "filler": f"{turn:04}" * (5 * MEGABYTE // 4)}))
        client = connect(rcvbuf=4096)
        client.sendall(b"GET /status HTTP/1.1\r\n\r\n")
        client.recv(1)  # it has been read, and the next one is another
        clients.append(client)
        most = max(most, program.megabytes() - before)
    left = connections() - idle
    status, body, took = timed_get("/status", seconds=20)
    require(status == 200 and len(body) > 5 * MEGABYTE, f"Who reads got {len(body)} bytes")
    for client in clients:
        client.close()
    wait_for(lambda: program.megabytes() < before + 20, 15, 0.5)
    after = program.megabytes() - before
    seen = f"{most:+.0f} MB at most with {left} of 120 still there; {after:+.1f} MB afterwards"
    require(most < 64 + 3 * 5 + 8 and 0 < left < 20 and after < 20, seen)
    program.end()
    return f"{seen}; who reads had all of it after {took:.1f} s."


@row(seconds=80)
def slow_but_reading():
    """A client reads a document of 5 MB at 100 KB a second, for longer than 30 s.

    It gets all of it.
    """
    _, program = serving(5 * MEGABYTE)
    client = connect(rcvbuf=65536)
    client.sendall(b"GET /status HTTP/1.1\r\n\r\n")
    began = time.monotonic()
    got = 0
    while part := client.recv(50_000):
        got += len(part)
        time.sleep(len(part) / 100_000 * (0 if got > 4.6 * MEGABYTE else 0.8))
    took = time.monotonic() - began
    require(took > 31, f"It took {took:.0f} s only, which shows nothing")
    require(got > 5 * MEGABYTE, f"{got / MEGABYTE:.1f} of 5 MB within {took:.0f} s")
    program.end()
    return f"All {got / MEGABYTE:.1f} MB within {took:.0f} s."


@row(seconds=80)
def too_slow_readers():
    """A client stops reading in the middle; another reads 50 bytes a second.

    One is dropped within 40 s, and the other within a minute.
    """
    _, program = serving(5 * MEGABYTE)
    clients = [connect(rcvbuf=4096) for _ in range(2)]
    for client in clients:
        client.sendall(b"GET /status HTTP/1.1\r\n\r\n")
    began = time.monotonic()
    gone = []
    while time.monotonic() - began < 60 and len(gone) < 2:
        with contextlib.suppress(OSError):
            clients[1].recv(50)
        time.sleep(1)
        if 2 - connections() > len(gone):
            gone.append(time.monotonic() - began)
    require(len(gone) == 2, f"{2 - len(gone)} are still there after a minute")
    require(gone[0] <= 40, f"The first was dropped after {gone[0]:.0f} s")
    program.end()
    return f"Dropped after {gone[0]:.0f} and {gone[1]:.0f} s."


@row(seconds=60)
def dripping_requests():
    """200 clients send their request one byte a second, and never end it.

    Each is dropped after 5 s of silence or at the bound of a request; others are answered meanwhile.
    """
    _, program = serving()
    calm = program.rest()
    clients = many(200)
    end = time.monotonic() + 12
    slowest = 0
    while time.monotonic() < end:
        for client in clients:
            with contextlib.suppress(OSError):
                client.send(b"G")
        slowest = max(slowest, must_serve("beside dripping requests"))
        time.sleep(1)
    after = program.calm_descriptors(calm + 5, 12)
    require(after <= calm + 5, f"{after - calm} of 200 are still there")
    program.end()
    return f"All were dropped; the slowest other answer took {slowest * 1000:.0f} ms."


@row(seconds=30, quick=True)
def strange_requests():
    """Requests that are no HTTP: noise, 1 MB of headers, null bytes, folders above the root, every method, half a line.

    None is answered with a file or a history; the program goes on and answers the next one.
    """
    home, program = serving()
    home.write(".duskrell/duskrell.json", '{"gateway":{"auth":{"token":"s3cret"}}}')
    home.write("secret", "content of a file")
    for request in (os.urandom(4096), b"GET / HTTP/1.1\r\n" + b"X: y\r\n" * 170_000, b"\0" * 5000, b"GET /../../secret HTTP/1.1\r\n\r\n",
                    b"GET //secret HTTP/1.1\r\n\r\n", b"GET /%2e%2e/secret HTTP/1.1\r\n\r\n", b"PUT /status HTTP/1.1\r\n\r\n{}",
                    b"DELETE /status HTTP/1.1\r\n\r\n", b"GET http://other/history HTTP/1.1\r\n\r\n", b"\r\n\r\n", b"GET",
                    b"POST /history HTTP/1.1\r\n\r\nAuthorization: Bearer s3cret\r\n\r\n",
                    b"GET /history HTTP/1.1\r\nAuthorization: Bearer wrong\r\n\r\n"):
        with contextlib.suppress(OSError):
            answer = exchange(request)
            require(b"content of a file" not in answer and b'"messages"' not in answer, f"Answered: {request[:40]!r}")
        must_serve(f"after {request[:40]!r}")
    require(get("/history", headers="Authorization: Bearer s3cret\r\n")[0] == 200, "The right token is refused")
    program.end()
    return "Nothing was given away; the right token was answered."


@row(seconds=60)
def taken_port():
    """Another program has the status port at the start; after 10 s it lets go.

    The program says so and takes the port when it next tries, every 30 s: within 32 s. It hardly uses the processor meanwhile.
    """
    home = Home()
    home.configure()
    taker = socket.socket()
    taker.bind(("0.0.0.0", STATUS_PORT))
    taker.listen()
    program = Program(home)
    require(program.wait_for("Failed to bind", 10), "No line says that the port is taken")
    busy = program.processor_seconds()
    time.sleep(8)
    busy = program.processor_seconds() - busy
    require(busy < 1, f"It was busy for {busy:.1f} of 8 s")
    taker.close()
    began = time.monotonic()
    require(wait_for(lambda: get("/health")[0] == 200, 32, 0.2), "It does not take the port")
    took = time.monotonic() - began
    program.end()
    return f"It listened {took:.0f} s after the port was free."


@row(seconds=60)
def network_gone():
    """The machine's network goes down for 10 s, in the middle of answers and polls, and comes back.

    Who asks afterwards is answered at once; descriptors are what they were.
    """
    _, program = serving(MEGABYTE // 2)
    time.sleep(3)
    calm = program.rest()
    clients = many(50)
    set_loopback(False)
    time.sleep(10)
    program.must_run("without a network")
    set_loopback(True)
    took = must_serve("after the network came back")
    for client in clients:
        client.close()
    after = program.calm_descriptors(calm + 5)
    require(after <= calm + 5, f"{after} descriptors, {calm} before")
    program.end()
    return f"/health took {took * 1000:.0f} ms afterwards; {after} descriptors, {calm} before."


@row(seconds=60)
def burst_of_history():
    """300 clients ask for the history at once, over a session log of 100 MB.

    64 are under way at a time; the program goes on, others are answered, and its memory comes back.
    """
    home = Home()
    home.configure()
    install_tool("duskrell", "exit 1")
    line = json.dumps({"type": "message", "message": {"role": "user", "content": [{"type": "text", "text": "word " * 200}]}}) + "\n"
    home.write(".duskrell/agents/main/sessions/one.jsonl", line * (100 * MEGABYTE // len(line)))
    program = Program(home).listens()
    before = program.megabytes()
    answers = []
    threads = [threading.Thread(target=lambda: answers.append(get("/history?limit=200", seconds=30)[0])) for _ in range(300)]
    for thread in threads:
        thread.start()
    slowest = max(must_serve("while the history is read") for _ in range(10))
    for thread in threads:
        thread.join()
    served = answers.count(200)
    require(served >= 64, f"Only {served} of 300 were answered")
    wait_for(lambda: program.megabytes() < before + 32, 10, 0.5)
    grown = program.megabytes() - before
    require(grown < 32, f"{grown:.0f} MB stay")
    program.end()
    return f"{served} were answered, {300 - served} dropped; the slowest other answer took {slowest * 1000:.0f} ms; {grown:+.1f} MB afterwards."


@row(seconds=30)
def other_origins():
    """A web page's requests: a preflight, a simple request with the token in its body, a foreign Host and Origin.

    Without the token in a header no history; the documents are open to all, by design.
    """
    home, program = serving()
    home.write(".duskrell/duskrell.json", '{"gateway":{"auth":{"token":"s3cret"}}}')
    body = b"Authorization: Bearer s3cret"
    simple = exchange(b"POST /history HTTP/1.1\r\nHost: evil\r\nOrigin: http://evil\r\nContent-Length: %d\r\n\r\n%s" % (len(body), body))
    require(b" 401 " in simple.split(b"\r\n")[0], f"Answered {simple[:60]!r}")
    preflight = exchange(b"OPTIONS /history HTTP/1.1\r\nHost: evil\r\nOrigin: http://evil\r\n"
                         b"Access-Control-Request-Headers: authorization\r\n\r\n")
    require(b" 204 " in preflight.split(b"\r\n")[0] and b"authorization" not in preflight.lower(), f"The preflight allows {preflight!r}")
    page = exchange(b"GET /status HTTP/1.1\r\nHost: evil\r\nOrigin: http://evil\r\n\r\n")
    head, _, body = page.partition(b"\r\n\r\n")
    require(b" 200 " in head and b"Access-Control-Allow-Origin: *" in head and b'"agents"' in body, f"The document is refused: {head!r}")
    program.end()
    return "401 for the simple request, 204 without that header for the preflight, the document for all."


@row(seconds=30)
def no_memory_for_a_document():
    """The agents' document has grown to 250 MB when a client asks for it, and the program may have 400 MB of addresses in all.

    The log says so, nobody waits, the others are served, and the document is, too, once it is small again.
    """
    home, program = serving(limits=[(resource.RLIMIT_AS, 400 * MEGABYTE)])
    file = home.file(DOCUMENTS["status"])
    small = file.read_bytes()
    os.truncate(file, 250 * MEGABYTE)
    answered = [timed_get("/status") for _ in range(3)]
    require(all(status == 404 for status, _, _ in answered), f"Answered {answered}")
    told = program.wait_for("Request dropped")
    require(told, "The log says nothing")
    must_serve("with too large a document")
    file.write_bytes(small)
    require(document("status"), "The small document is not served")
    slowest = max(took for _, _, took in answered)
    return f"{told}; a 404 after {slowest * 1000:.0f} ms at most; it ended in {program.end():.1f} s."


@row(seconds=30)
def no_thread_for_an_answer():
    """The user may start no thread any more when clients ask for a document and the history, at once and after a pause.

    The log says so, nobody waits for the history, the others are served, and the document is, too, once there are threads again.
    """
    another_user()
    home = Home("/tmp/theirs", user=61234)  # nobody else's threads count
    home.configure()
    install_tool("duskrell", "exit 1")
    home.write(DOCUMENTS["status"], '{"agents":{}}')
    subprocess.run(["chown", "-R", str(home.user), str(home.path), str(home.runtime)], check=True)
    program = Program(home).listens()
    program.rest()  # a library that wants a thread for good, and gets none, ends the program
    program.allow_threads(1)
    hesitates = connect()
    time.sleep(0.3)
    freeze(program.process)  # until the others have sent all
    waits, dropped = connect(), connect()
    for client, wish in ((hesitates, b"/history"), (dropped, b"/history"), (waits, b"/status")):
        client.sendall(b"GET %s HTTP/1.1\r\n\r\n" % wish)
    thaw(program.process)
    answers = [hesitates.recv(1), dropped.recv(1)]
    require(not any(answers), f"Answered {answers}")
    require(wait_for(lambda: program.output().count("Request dropped") == 3), f"It says: {program.output()}")
    must_serve("without a thread")
    program.allow_threads(64)
    require(document("status") == {"agents": {}}, "The document is not served with threads")
    require(b" 200 " in waits.recv(100), "Who has waited for it is not served")
    return f"{program.wait_for('Request dropped')}; it ended in {program.end():.1f} s."


@row(seconds=60)
def no_watches_left():
    """Another program has the status port and lets go; then the system watches no more sockets (`epoll_ctl` fails with ENOSPC).

    The log says so, nobody is left waiting at the port, and the program does not say that it listens; it ends in time.
    """
    home = Home()
    home.configure()
    with socket.create_server(("0.0.0.0", STATUS_PORT)):
        program = Program(home)
        require(program.wait_for("Failed to bind"), "No line says that the port is taken")
        tracer = subprocess.Popen(["strace", "-f", "-qq", "-o", "/dev/null", "-p", str(program.pid), "-e", "trace=epoll_ctl",
                                   "-e", "inject=epoll_ctl:error=ENOSPC"])
    told = program.wait_for("Accept error", 40)
    require(told and "Listening" not in program.output(), f"It says: {program.tail()}")
    require(get("/health")[0] == 0, "Somebody answers")
    tracer.terminate()
    tracer.wait()
    return f"{told}; it ended in {program.end():.1f} s."
