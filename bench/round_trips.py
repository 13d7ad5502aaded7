#!/usr/bin/env python3
"""Whole installs over a line with a long way to go, beside curl with four kept connections on the same line.

    bench/round_trips.py [BUILD_FOLDER]

The line is a relay on the loopback that delays every byte by half a round trip each way, a connection by one round trip, and
lets through 100 Mbit a second in all. It knows no slow start, so both sides look better than they are on a true line; what
counts is the one beside the other.
"""
import asyncio
import multiprocessing
import os
import random
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
os.environ["VELARIS_BIN"] = os.path.abspath(sys.argv.pop(1) if len(sys.argv) > 1 else os.path.join(ROOT, "build"))
sys.path.insert(0, os.path.join(ROOT, "tests", "support"))
import installer
import release
import servers

BYTES_A_SECOND = 100e6 / 8
FILES = 1000


class Line:
    """One way for all connections: bytes leave it in order, no faster than the line and half a round trip later."""

    def __init__(self, delay):
        self.delay, self.free = delay, 0.0

    async def carry(self, reader, writer, not_before):
        queue = asyncio.Queue()

        async def deliver():
            while (item := await queue.get()) is not None:
                due, part = item
                await asyncio.sleep(max(0, due - time.monotonic()))
                writer.write(part)
                await writer.drain()
            writer.close()

        delivery = asyncio.create_task(deliver())
        try:
            while part := await reader.read(16384):
                self.free = max(self.free, time.monotonic()) + len(part) / BYTES_A_SECOND
                queue.put_nowait((max(self.free, not_before) + self.delay, part))
                await asyncio.sleep(max(0, self.free - time.monotonic() - 0.02))
        except OSError:
            pass
        queue.put_nowait(None)
        try:
            await delivery
        except OSError:
            pass


def relay(port, target, round_trip):
    there, back = Line(round_trip / 2), Line(round_trip / 2)

    async def serve(reader, writer):
        begun = time.monotonic()
        far_reader, far_writer = await asyncio.open_connection("127.0.0.1", target)
        # A connection is there one round trip after it was asked for.
        await asyncio.gather(there.carry(reader, far_writer, begun + round_trip),
                             back.carry(far_reader, writer, 0))

    async def main():
        server = await asyncio.start_server(serve, "127.0.0.1", port, backlog=100)
        async with server:
            await server.serve_forever()

    asyncio.run(main())


def timed(command, **how):
    start = time.monotonic()
    done = subprocess.run(command, capture_output=True, text=True, **how)
    if done.returncode != 0:
        sys.exit(f"{command[0]} ended with {done.returncode}:\n{done.stdout[-2000:]}{done.stderr[-2000:]}")
    return time.monotonic() - start


def main():
    dice = random.Random(1)
    tree = release.landmarks()
    for number in range(FILES):
        tree.add(f"All/Custom Scenery/{number % 20}/tile {number}.dat", release.noise(dice.randrange(300, 6000), number))
    large = release.landmarks()
    for number in range(4):
        large.add(f"All/Custom Scenery/large {number}.dat", release.noise(12_000_000, number))
    with tempfile.TemporaryDirectory() as folder:
        authority = servers.Authority(os.path.join(folder, "ca"))
        print(f"{'':30}{'round trip':>12}{'curl':>16}{'installer':>16}{'ratio':>8}")
        for what, made in (("small", tree), ("large", large)):
            publisher = release.Publisher(installer.BUILDER, os.path.join(folder, what))
            new = publisher.publish(made, release.NEW, 90019)
            count = len(new.tree.installed()) + 2
            size = sum(os.path.getsize(os.path.join(at, name)) for at, _, names in os.walk(publisher.web) for name in names)
            web = servers.Nginx(publisher.web, os.path.join(folder, what + "-nginx"),
                                tls=authority.issue(["IP:127.0.0.1"]))
            for scheme, target in (("http", web.port), ("https", web.tls_port)):
                for round_trip in (0.02, 0.1):
                    port = servers.free_port()
                    line = multiprocessing.Process(target=relay, args=(port, target, round_trip), daemon=True)
                    line.start()
                    time.sleep(0.5)
                    host = f"{scheme}://127.0.0.1:{port}"
                    publisher.announce(new, [host])
                    trust = {**os.environ, "SSL_CERT_FILE": authority.certificate, "CURL_CA_BUNDLE": authority.certificate}
                    paths = ["serverlist.txt", f"beta/{new.name}/directory.txt.zip"]
                    paths += [f"beta/{new.name}/{path}.zip" for path, item in new.tree.items.items()
                              if release.LINUX in item.systems]
                    config = os.path.join(folder, "urls")
                    with open(config, "w", encoding="utf-8") as text:
                        for number, path in enumerate(paths):
                            url = host + "/" + path.replace(" ", "%20")
                            text.write(f'url = "{url}"\noutput = "{folder}/got/{number}"\n')
                    curl = min(timed(["curl", "-sS", "--http1.1", "-Z", "--parallel-max", "4", "--create-dirs", "-K", config],
                                     env=trust) for _ in range(2))
                    ours = []
                    for turn in range(3):
                        desk = installer.Desk(os.path.join(folder, f"desk-{what}-{port}-{turn}"))
                        ours.append(timed([desk.program, "-path", os.path.join(desk.folder, "copy"), "--console", "--agree",
                                           "--quiet", f"--list_host={host}"],
                                          env=desk.environment(SSL_CERT_FILE=authority.certificate)))
                    line.kill()
                    mine = min(ours)
                    if what == "small":
                        shown = [f"{count / one:.0f} files/s" for one in (curl, mine)]
                    else:
                        shown = [f"{size / one * 8e-6:.0f} Mbit/s" for one in (curl, mine)]
                    print(f"{f'{count} files, {size / 1e6:.1f} MB, {scheme}':30}{round_trip * 1000:9.0f} ms"
                          f"{shown[0]:>16}{shown[1]:>16}{curl / mine:8.1f}", flush=True)
            web.stop()


if __name__ == "__main__":
    main()
