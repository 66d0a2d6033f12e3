#!/usr/bin/env python3
"""http_fetch.py [SIZE_MIB] [RUNS]: downloading a file over HTTP from a local server into a file,
`cordel fetch -o` against `curl -o`, each a whole process timed on the wall clock, with its peak
resident memory. Prints the section of RESULTS.md:

    python3 bench/http_fetch.py > bench/results/http.md
    python3 bench/report.py --assemble bench/results > bench/RESULTS.md

The server is a thread of this script sending the file with sendfile(), so that it costs both
clients the same and little. The runs alternate between the clients, and the page cache is
flushed (sync) before each run so that no run pays for the previous one's writing.
"""
import datetime
import http.server
import os
import socketserver
import statistics
import subprocess
import sys
import tempfile
import threading
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from report import machine  # noqa: E402

root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
size_mib = int(sys.argv[1]) if len(sys.argv) > 1 else 1024
runs = int(sys.argv[2]) if len(sys.argv) > 2 else 3
cordel = os.path.join(root, "build/release/tools/cordel/cordel")


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def do_GET(self):
        with open(self.server.path, "rb") as f:
            self.send_response(200)
            self.send_header("Content-Type", "application/octet-stream")
            self.send_header("Content-Length", str(os.fstat(f.fileno()).st_size))
            self.send_header("Connection", "close")
            self.end_headers()
            self.wfile.flush()
            self.connection.sendfile(f)

    def log_message(self, *args):
        pass


class Server(socketserver.ThreadingMixIn, http.server.HTTPServer):
    daemon_threads = True


def run(argv, out):
    """Wall time in seconds and peak RSS in KiB of one client process. The peak comes from
    /usr/bin/time, whose child is the client alone: a child of this script would count the
    Python process it was forked from."""
    if os.path.exists(out):
        os.remove(out)
    os.sync()
    peak = out + ".rss"
    start = time.perf_counter()
    status = subprocess.run(["/usr/bin/time", "-f", "%M", "-o", peak] + argv,
                            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode
    elapsed = time.perf_counter() - start
    if status != 0 or os.path.getsize(out) != size_mib << 20:
        sys.exit(f"http_fetch: {argv[0]} failed (status {status})")
    with open(peak) as f:
        return elapsed, int(f.read().split()[-1])


def main():
    if not os.path.exists(cordel):
        sys.exit("http_fetch: build the release preset first (cordel tool missing)")
    with tempfile.TemporaryDirectory(prefix="cordel-http-bench-") as work:
        source = os.path.join(work, "source.bin")
        block = os.urandom(1 << 20)
        with open(source, "wb") as f:
            for _ in range(size_mib):
                f.write(block)
        server = Server(("127.0.0.1", 0), Handler)
        server.path = source
        threading.Thread(target=server.serve_forever, daemon=True).start()
        url = f"http://127.0.0.1:{server.server_address[1]}/source.bin"
        out = os.path.join(work, "out.bin")
        for name in ("http_proxy", "HTTP_PROXY", "all_proxy", "ALL_PROXY"):
            os.environ.pop(name, None)

        clients = {
            "Cordel (cordel fetch -o)": [cordel, "fetch", url, "-o", out],
            "curl -o": ["curl", "-s", "-o", out, url],
        }
        results = {name: [] for name in clients}
        load_before = os.getloadavg()
        for _ in range(runs):
            for name, argv in clients.items():
                results[name].append(run(argv, out))
        load_after = os.getloadavg()
        server.shutdown()

    ours = statistics.median(t for t, _ in results["Cordel (cordel fetch -o)"])
    print("## http\n")
    print(f"{machine()}; {datetime.date.today()}; `bench/http_fetch.py`, by hand: {runs} runs of each client, "
          f"alternating, a {size_mib} MiB body from a local sendfile() server into a file, wall time of the whole process.")
    quiet = max(load_before[0], load_after[0]) < 1.5
    print(f"{'Load' if quiet else 'The machine was not quiet: load'} average {load_before[0]:.2f} before and "
          f"{load_after[0]:.2f} after (1-minute figures).\n")
    print("| who | median time | range | throughput (median) | peak RSS (max) | Cordel speed vs this |")
    print("|---|---|---|---|---|---|")
    for name, rows in results.items():
        times = [t for t, _ in rows]
        median = statistics.median(times)
        ratio = "" if name.startswith("Cordel") else f"{median / ours:.2f}x"
        print(f"| {name} | {median:.2f} s | {min(times):.2f}-{max(times):.2f} s | {size_mib / median:.0f} MiB/s | "
              f"{max(r for _, r in rows) / 1024:.1f} MiB | {ratio} |")
    print()


if __name__ == "__main__":
    main()
