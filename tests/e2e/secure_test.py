"""The ways to a server: https and what is refused there, proxies and tunnels, IPv6, names with several addresses."""
import os
import subprocess
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import installer
import release
import servers

# Stands before the C library's own: names that end in ".test" take 30 ms and have the addresses of VELARIS_ADDRESSES.
NAME_SERVICE = r"""
#define _GNU_SOURCE
#include <dlfcn.h>
#include <netdb.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>
int getaddrinfo(const char* host, const char* service, const struct addrinfo* hints, struct addrinfo** list) {
    int (*next)(const char*, const char*, const struct addrinfo*, struct addrinfo**) = dlsym(RTLD_NEXT, "getaddrinfo");
    size_t length = strlen(host);
    if (length < 5 || strcmp(host + length - 5, ".test") || (hints->ai_flags & AI_NUMERICHOST))
        return next(host, service, hints, list);
    usleep(30000);
    char* addresses = strdup(getenv("VELARIS_ADDRESSES"));
    for (char* one = strtok(addresses, " "); one; one = strtok(NULL, " ")) {
        if (next(one, service, hints, list) != 0) return EAI_NONAME;
        list = &(*list)->ai_next;
    }
    return 0;
}
"""


class SecureTest(installer.Scene):
    @classmethod
    def setUpClass(cls):
        def tiles(count):
            tree = release.landmarks()
            for number in range(count):
                tree.add(f"All/Custom Scenery/{number % 10}/tile {number}.dat", release.noise(number % 900, number))
            return tree

        cls.publisher, (cls.new, cls.large) = installer.publish(cls, tiles(100), tiles(1000))
        cls.place = installer.private_folder(cls)
        cls.authority = servers.Authority(os.path.join(cls.place, "ca"))
        cls.servers = 0
        cls.good = cls.nginx(tls=cls.authority.issue(["IP:127.0.0.1", "DNS:mirror.test"]))
        code = os.path.join(cls.place, "names.c")
        with open(code, "w", encoding="utf-8") as text:
            text.write(NAME_SERVICE)
        cls.names = os.path.join(cls.place, "names.so")
        subprocess.run(["cc", "-shared", "-fPIC", "-w", "-o", cls.names, code], check=True)

    @classmethod
    def nginx(cls, **how):
        cls.servers += 1
        return installer.keep_up(cls, servers.Nginx(cls.publisher.web, os.path.join(cls.place, f"nginx-{cls.servers}"),
                                                    **how))

    def install_from(self, server, *options, status=0, listed=None, **environment):
        """With the list and all else from one server; returns what was said and how long it took."""
        self.host = server
        self.publisher.announce(self.new, [listed or server])
        environment.setdefault("SSL_CERT_FILE", self.authority.certificate)
        start = time.monotonic()
        outcome = self.install("--pref:_rename_folder=0", "--quiet", *options, status=status, **environment)
        took = time.monotonic() - start
        if status == 0:
            self.assert_installed(self.new.tree.installed())
        return outcome.out + outcome.err, took

    def test_https_needs_no_more_than_a_certificate_that_holds(self):
        self.install_from(f"https://{self.good.host}:{self.good.tls_port}")

    def test_every_refusal_is_told_in_words(self):
        def tls(server):
            return f"https://127.0.0.1:{server.tls_port}"

        issue = self.authority.issue
        ended = self.nginx(tls=issue(["IP:127.0.0.1"], days=-1))
        other = self.nginx(tls=issue(["DNS:elsewhere.example"]))
        old = self.nginx(tls=issue(["IP:127.0.0.1"]), more="ssl_protocols TLSv1.1; ssl_ciphers ALL:@SECLEVEL=0;")
        down = self.nginx(tls=issue(["IP:127.0.0.1"]),
                          more="location /beta/ { return 302 http://127.0.0.1:1$request_uri; }")
        rows = {
            "ended": (tls(ended), {}, r"the certificate of 127\.0\.0\.1 ended on \d{4}-\d\d-\d\d for /serverlist\.txt"),
            "of another host": (tls(other), {}, "is for another host, elsewhere.example"),
            "of nobody's": (tls(self.good), {"SSL_CERT_FILE": "/dev/null"}, "signed by nobody whom this system trusts"),
            "no TLS": (f"https://{self.good.address}", {}, "TLS failed"),
            "an old TLS": (tls(old), {}, "TLS failed"),
            "down to http": (tls(down), {}, "sent on from https to http"),
        }
        for case, (host, environment, words) in rows.items():
            with self.subTest(case=case):
                said, _ = self.install_from(host, "--give_up=0.7", status=4, **environment)
                self.assertRegex(said, words)
                self.assertFalse(os.path.exists(os.path.join(self.dest, "Custom Scenery")))

    def test_proxies_with_a_password_and_tunnels(self):
        secure, plain = f"https://127.0.0.1:{self.good.tls_port}", self.good.address
        tiny = installer.keep_up(self, servers.Tinyproxy(os.path.join(self.folder, "tiny"), login="me:pass-1"))
        squid = installer.keep_up(self, servers.Squid())
        asked_directly = len(self.good.requests())
        for proxy, login in ((tiny, "me:pass%2D1@"), (squid, "")):
            for name, host in (("https_proxy", secure), ("http_proxy", plain)):
                with self.subTest(proxy=type(proxy).__name__, way=name):
                    dest = os.path.join(self.folder, type(proxy).__name__ + name)
                    self.host = host
                    self.publisher.announce(self.new, [host])
                    self.install("--pref:_rename_folder=0", "--quiet", dest=dest, SSL_CERT_FILE=self.authority.certificate,
                                 **{name: f"http://{login}{proxy.address}"})
                    self.assert_installed(self.new.tree.installed(), dest)
                    if name == "https_proxy":       # the tunnel's end sees no paths
                        seen = {one for one in proxy.requests() if not one.startswith("error:")}
                        self.assertEqual(seen, {f"127.0.0.1:{self.good.tls_port}"})
        self.assertGreater(len(self.good.requests()), asked_directly + 400)
        for name, host in (("https_proxy", secure), ("http_proxy", plain)):
            said, _ = self.install_from(host, "--give_up=0.5", status=4, **{name: f"http://me:wrong@{tiny.address}"})
            self.assertRegex(said, "40[137] ")
        # The setting wins over the environment, and no_proxy over both.
        setting = ("--pref:_proxy_host=me:pass%2D1@127.0.0.1", f"--pref:_proxy_port_int={tiny.port}")
        before = len(tiny.requests())
        self.install_from(secure, *setting, https_proxy="http://127.0.0.1:1")
        self.assertGreater(len(tiny.requests()), before)
        before = len(tiny.requests())
        self.install_from(secure, *setting, "--verify", no_proxy="127.0.0.1")
        self.assertEqual(len(tiny.requests()), before)

    def test_names_and_addresses(self):
        six = self.nginx(address="[::1]", tls=self.authority.issue(["IP:::1"]))
        for host in (six.address, f"https://[::1]:{six.tls_port}"):
            self.install_from(host, "--verify")
        # A name that takes its time is asked for once, and addresses that lead nowhere are passed over.
        how = {"LD_PRELOAD": self.names, "VELARIS_ADDRESSES": "::1 127.0.0.9 127.0.0.1"}
        took, self.new = {}, self.large
        for host in (f"127.0.0.1:{self.good.port}", f"mirror.test:{self.good.port}",
                     f"https://mirror.test:{self.good.tls_port}"):
            self.dest = os.path.join(self.folder, f"{len(took)}")
            took[host] = self.install_from(host, **how)[1]
        plain, by_name, _ = took.values()
        self.assertLess(by_name, 3 * plain + 1, "1,000 files by a name that takes 30 ms to look up")


if __name__ == "__main__":
    installer.main()
