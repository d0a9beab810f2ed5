"""CardDAV servers of Debian's packages, each on loopback with a folder of its own.

The user is ann with the password "secret" (Xandikos asks for neither). A server says how its home is
found and what it is known to do otherwise than the rest; requests of "another program" go through it.
"""
import atexit
import hashlib
import os
import pathlib
import pwd
import re
import shutil
import signal
import socket
import sqlite3
import subprocess
import tempfile
import time
import urllib.parse
import xml.etree.ElementTree as ElementTree

HERE = pathlib.Path(__file__).resolve().parent
# Debian's own, whatever stands first in PATH: it is the one that has the servers' modules.
PYTHON = "/usr/bin/python3"
LARGEST = 6_550_000  # bytes of a card, of the servers that can be told so; one of them knows no other
MAKE_BOOK = """<?xml version="1.0" encoding="utf-8"?>
<mkcol xmlns="DAV:" xmlns:C="urn:ietf:params:xml:ns:carddav"><set><prop>
<resourcetype><collection/><C:addressbook/></resourcetype><displayname>{}</displayname></prop></set></mkcol>"""
RENAME = """<?xml version="1.0" encoding="utf-8"?>
<propertyupdate xmlns="DAV:"><set><prop><displayname>{}</displayname></prop></set></propertyupdate>"""
ETAGS = """<?xml version="1.0" encoding="utf-8"?><propfind xmlns="DAV:"><prop><getetag/><resourcetype/></prop></propfind>"""


class Server:
    name = None
    needs = ()  # files of its packages
    has_password = True
    found_by_host = True  # else by start_path alone
    tells_changes = True  # by sync-collection; else a ctag that has changed is learned by the next run
    idle_requests = 1  # of a run that finds nothing to do, once it knows where the book stands
    limits_size = True  # of a card, to LARGEST
    reader = None  # a user who may look at ann's books and change nothing
    start_path = "/"
    home_path = "/ann/"

    @classmethod
    def is_installed(cls):
        return all(os.path.exists(path) for path in cls.needs)

    def __init__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="ox-server-"))
        self.processes = []
        with socket.socket() as free:
            free.bind(("127.0.0.1", 0))
            self.port = free.getsockname()[1]
        self.origin = f"http://127.0.0.1:{self.port}"
        self.home = self.origin + self.home_path
        self.password_file = self.folder / "password"
        self.password_file.write_text("secret\n")
        self.password_file.chmod(0o600)
        atexit.register(self.stop)
        try:
            self.start()
            self.wait_until_up()
        except BaseException:
            self.stop()
            raise

    def start(self):
        raise NotImplementedError

    def run(self, *words, user=None, **environment):
        """Leaves a process of the server's behind."""
        log = open(self.folder / "log", "ab")
        self.processes.append(subprocess.Popen(
            words, stdin=subprocess.DEVNULL, stdout=log, stderr=log, user=user, start_new_session=True,
            env={"HOME": str(self.folder), "PATH": "/usr/bin:/bin", **environment}))
        log.close()

    def run_php(self, root, *router, **environment):
        self.run("/usr/bin/php", "-d", "memory_limit=512M", "-d", "display_errors=0", "-S", f"127.0.0.1:{self.port}", "-t", root, *router,
                 PHP_CLI_SERVER_WORKERS="4", **environment)

    def wait_until_up(self):
        for _ in range(600):
            if self.processes[-1].poll() is not None:
                break
            try:
                socket.create_connection(("127.0.0.1", self.port), 1).close()
                return
            except OSError:
                time.sleep(0.05)
        raise RuntimeError(f"{self.name} does not come up:\n{(self.folder / 'log').read_text()}")

    def stop(self):
        atexit.unregister(self.stop)
        for process in reversed(self.processes):
            # A server's children belong to its session, which is its own.
            try:
                os.killpg(process.pid, signal.SIGINT)
                process.wait(10)
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, signal.SIGKILL)
                process.wait()
            except ProcessLookupError:
                pass
        shutil.rmtree(self.folder, ignore_errors=True)

    # What becomes of the lines of a card.
    def spelling(self, line):
        """The same for two lines that say the same in the spellings of this server."""
        return line

    def keeps_less(self, line, there):
        """This line is known to become that one, which says less or other."""
        return False

    # What another program does.
    def request(self, method, url, body=None, **headers):
        """Status and body of the answer."""
        words = ["/usr/bin/curl", "-s", "--anyauth", "-u", "ann:secret", "-X", method, "-w", "%{stderr}%{http_code}", url]
        if body is not None:
            words += ["--data-binary", "@-"]
        for name, value in headers.items():
            words += ["-H", f"{name.replace('_', '-')}: {value}"]
        result = subprocess.run(words, input=(body or "").encode(), capture_output=True, check=True)
        return int(result.stderr), result.stdout

    def done(self, method, url, body=None, **headers):
        status, text = self.request(method, url, body, **headers)
        if not 200 <= status < 300:
            raise RuntimeError(f"{method} {url}: {status} {text[:400]!r}")
        return text

    def make_book(self, name):
        url = f"{self.home}{name}/"
        self.done("MKCOL", url, MAKE_BOOK.format(name), Content_Type="application/xml; charset=utf-8")
        return url

    def rename_book(self, url, name):
        self.done("PROPPATCH", url, RENAME.format(name), Content_Type="application/xml; charset=utf-8")

    def remove_book(self, url):
        self.done("DELETE", url)

    def listing(self, book):
        """The ETags of the book's cards, by URL."""
        text = self.done("PROPFIND", book, ETAGS, Depth="1", Content_Type="application/xml; charset=utf-8")
        cards = {}
        for response in ElementTree.fromstring(text).iter("{DAV:}response"):
            etag = response.find(".//{DAV:}getetag")
            if response.find(".//{DAV:}resourcetype/{DAV:}collection") is None and etag is not None and etag.text:
                cards[urllib.parse.urljoin(book, response.find("{DAV:}href").text)] = etag.text
        return cards

    def card(self, url):
        return self.done("GET", url).decode()

    def cards(self, book):
        return [self.card(url) for url in self.listing(book)]

    def put(self, url, text, etag=None):
        condition = {"If_Match": etag} if etag else {"If_None_Match": "*"}
        self.done("PUT", url, text, Content_Type="text/vcard; charset=utf-8", **condition)

    def remove(self, url):
        self.done("DELETE", url)

    def empty(self, book):
        for url in self.listing(book):
            self.remove(url)


class Radicale(Server):
    name = "radicale"
    needs = (PYTHON, "/usr/bin/radicale")
    reader = "bob"

    def start(self):
        (self.folder / "users").write_text("ann:secret\nbob:secret\n")
        (self.folder / "rights").write_text(
            "[ann]\nuser=ann\ncollection=.*\npermissions=RrWw\n[bob]\nuser=bob\ncollection=.*\npermissions=Rr\n")
        (self.folder / "settings").write_text(
            f"[server]\nhosts=127.0.0.1:{self.port}\nmax_content_length={LARGEST}\n"
            f"[auth]\ntype=htpasswd\nhtpasswd_filename={self.folder}/users\nhtpasswd_encryption=plain\ndelay=0\n"
            f"[rights]\ntype=from_file\nfile={self.folder}/rights\n[storage]\nfilesystem_folder={self.folder}/store\n")
        self.run(PYTHON, "/usr/bin/radicale", "-C", str(self.folder / "settings"))

    def spelling(self, line):
        # It writes names in capitals and parameters in order, quotes none, and escapes what it does not know.
        if line.startswith("X-OX-LINE:"):
            line = urllib.parse.unquote(line[10:])
        head, value = re.fullmatch(r'((?:[^:"]|"[^"]*")*):(.*)', line, re.S).groups()
        name, *parameters = head.replace('"', "").upper().split(";")
        return ";".join([name, *sorted(parameters)]) + ":" + value.replace("\\", "")

    def keeps_less(self, line, there):
        # It cuts the parts of a value at a comma.
        parts, kept = (text.split(";") for text in (self.spelling(line), self.spelling(there)))
        return len(parts) == len(kept) and all(a in (part, part.partition(",")[0]) for part, a in zip(parts, kept))


class Xandikos(Server):
    name = "xandikos"
    needs = (PYTHON, "/usr/bin/xandikos")
    has_password = False
    limits_size = False
    home_path = "/ann/contacts/"

    def start(self):
        (self.folder / "store").mkdir()
        self.run(PYTHON, "/usr/bin/xandikos", "-d", str(self.folder / "store"), "--defaults",
                 "--current-user-principal", "/ann/", "-l", "127.0.0.1", "-p", str(self.port))

    def wait_until_up(self):
        super().wait_until_up()
        self.remove_book(self.home + "addressbook/")  # the one that is there from the beginning


class Sabre(Server):
    name = "sabre"
    needs = ("/usr/bin/php", "/usr/share/php/Sabre/autoload.php", "/usr/share/doc/php-sabre-dav/examples/sql")
    tells_changes = False
    idle_requests = 2  # a challenge each time, which Digest begins with
    home_path = "/addressbooks/ann/"

    def start(self):
        database = sqlite3.connect(self.folder / "books.db")
        database.executescript("PRAGMA journal_mode=WAL;")
        for table in ("addressbooks", "principals", "users"):
            database.executescript(pathlib.Path(f"{self.needs[2]}/sqlite.{table}.sql").read_text())
        digest = hashlib.md5(b"ann:SabreDAV:secret").hexdigest()
        database.execute("DELETE FROM users")
        database.execute("DELETE FROM principals")
        database.execute("INSERT INTO users (username, digesta1) VALUES ('ann', ?)", (digest,))
        database.execute("INSERT INTO principals (uri, displayname) VALUES ('principals/ann', 'Ann')")
        database.commit()
        database.close()
        self.run_php(str(HERE), str(HERE / "sabre.php"), BOOKS=str(self.folder / "books.db"), LARGEST=str(LARGEST))

    def keeps_less(self, line, there):
        # It guesses at the charset of a card, and PHP since 8.1 takes some UTF-8 for Latin-1.
        return there == line.encode().decode("latin-1")


class Davical(Server):
    name = "davical"
    needs = ("/usr/bin/php", "/usr/share/davical/htdocs/caldav.php", "/etc/davical/config.php", "/usr/lib/postgresql")
    found_by_host = False  # /.well-known/ is left to a web server before it
    reader = "bob"
    start_path = "/caldav.php/"
    home_path = "/caldav.php/ann/"

    def start(self):
        # PostgreSQL does not run as root; its package made a user for it.
        user = "postgres" if os.getuid() == 0 else None
        cluster = self.folder / "cluster"
        cluster.mkdir()
        if user:
            self.folder.chmod(0o711)
            os.chown(cluster, pwd.getpwnam(user).pw_uid, -1)
        tools = max(pathlib.Path(self.needs[3]).iterdir()) / "bin"
        environment = {"PATH": f"{tools}:/usr/bin:/bin", "HOME": str(cluster), "PGHOST": str(cluster), "PGUSER": "postgres"}

        def tool(*words, text=None):
            result = subprocess.run(words, input=text, env=environment, user=user, cwd=cluster, capture_output=True, text=True)
            if result.returncode:
                raise RuntimeError(f"{words}: {result.stdout}{result.stderr}")

        tool("initdb", "-D", str(cluster / "data"), "-U", "postgres", "-A", "trust", "-E", "UTF8", "--no-sync")
        self.run(str(tools / "postgres"), "-D", str(cluster / "data"), "-k", str(cluster), "-c", "listen_addresses=",
                 "-c", "fsync=off", user=user)
        for _ in range(200):
            if subprocess.run([tools / "pg_isready", "-q"], env=environment, check=False).returncode == 0:
                break
            time.sleep(0.05)
        tool("/usr/share/davical/dba/create-database.sh", "davical", "secret")
        tool("psql", "-qX", "-v", "ON_ERROR_STOP=1", "davical", text="""
INSERT INTO usr (user_no, active, username, password, fullname) VALUES (50, TRUE, 'ann', '**secret', 'Ann'), (51, TRUE, 'bob', '**secret', 'Bob');
INSERT INTO principal (principal_id, type_id, user_no, displayname) VALUES (50, 1, 50, 'Ann'), (51, 1, 51, 'Bob');
INSERT INTO grants (by_principal, to_principal, privileges, is_group) VALUES (50, 51, privilege_to_bits('DAV::read'), FALSE);""")
        self.run_php("/usr/share/davical/htdocs", PGHOST=str(cluster))


SERVERS = {server.name: server for server in (Radicale, Xandikos, Sabre, Davical)}
