"""Web servers on free loopback ports, each with its configuration of deploy/ and a folder of its own.

    with Lighttpd(programs, folder) as server:
        urllib.request.urlopen(server.url("sign.cgi"), b"...")

`programs` is a folder with sign.cgi, `limited` and, but for nginx, nph-sign.cgi. `folder` must exist; the
server puts a folder of its own there, with its log. `static`, if given, is a folder whose files the
server hands out as well. The others are lines of an administrator's: `own` for the file that the
configuration includes, `site` for the site, and `whole` for the whole server. A server ends with the
block, by its own process id.
"""

import contextlib
import os
import pwd
import re
import shlex
import shutil
import signal
import socket
import subprocess
import tempfile
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
DEPLOY = ROOT / "deploy"
INSTALLED = "/usr/libexec/sign-cgi"
INSTALLED_SOCKET = "/run/sign-fcgiwrap/$sign_service.socket"
OWN = "/etc/sign-cgi"
SECONDS_TO_START = 20
SECONDS_TO_STOP = 20
ACCOUNT = "www-data"  # of the servers and what they start, when the tests run as root


def program_of_server(name):
    """The path of a server's program, which Debian keeps where not every user looks."""
    path = shutil.which(name, path=os.environ["PATH"] + ":/usr/sbin:/sbin")
    if path is None:
        raise FileNotFoundError(f"{name} is not installed")
    return path


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def has_ipv6():
    """Whether this machine has the loopback address of IPv6."""
    with socket.socket(socket.AF_INET6) as probe:
        try:
            probe.bind(("::1", 0))
        except OSError:
            return False
    return True


def runs_as_root():
    return os.geteuid() == 0


def give_to_account(path):
    """Makes the account that the servers run as the owner of this folder or file."""
    if runs_as_root():
        account = pwd.getpwnam(ACCOUNT)
        os.chown(path, account.pw_uid, account.pw_gid)


@contextlib.contextmanager
def temporary_folder():
    """A folder that the account which the servers run as can enter, until the block ends."""
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        folder.chmod(0o755)
        yield folder


def let_account_read(path):
    """The group of the account that the servers run as reads this file, and its owner keeps it."""
    if runs_as_root():
        os.chown(path, -1, pwd.getpwnam(ACCOUNT).pw_gid)
        path.chmod(0o640)


def stop(process):
    """Ends a process that this one started, with its group: fcgiwrap leaves its workers behind."""
    process.send_signal(signal.SIGTERM)
    try:
        process.wait(SECONDS_TO_STOP)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass  # it has left nothing


class Server:
    """What the servers share. Each writes its main configuration, which includes that of deploy/."""

    nph = True  # whether nph-sign.cgi is served
    language = None  # of its configuration, as documents call it
    FILES = ()  # of deploy/

    def __init__(self, programs, folder, static=None, own="", site="", whole=""):
        self.folder = Path(folder) / f"{type(self).__name__.lower()}-{free_port()}"
        self.folder.mkdir()
        # Copies, where the server's account can reach them; a prefix may hold spaces.
        self.programs = self.folder / "the programs"
        self.programs.mkdir()
        for pattern in ("*sign.cgi", "limited"):
            for program in Path(programs).glob(pattern):
                shutil.copy(program, self.programs)
        self.static = Path(static) if static else self.folder / "static"
        self.static.mkdir(exist_ok=True)
        self.own = self.folder / "own"
        self.site, self.whole = (lines.replace(OWN, str(self.own)) for lines in (site, whole))
        if own:
            (self.own / self.language).mkdir(parents=True)
            self.write(f"own/{self.language}/lines.conf", own.replace(OWN, str(self.own)))
        self.log = self.folder / "error.log"
        self.port = free_port()
        self.processes = []
        for path in (self.folder, self.static):
            path.chmod(0o755)
            give_to_account(path)

    def url(self, path):
        return f"http://127.0.0.1:{self.port}/{path}"

    def configuration(self, name):
        """The file of deploy/, with this server's folders and names in place of those installed."""
        text = (DEPLOY / name).read_text(encoding="utf-8")
        text = text.replace(INSTALLED, str(self.programs)).replace(OWN, str(self.own))
        return text.replace(INSTALLED_SOCKET, str(self.folder / "fcgiwrap.socket"))

    def at_ipv6(self, directive):
        """A directive to listen at ::1 as well, where this machine has that."""
        return directive if has_ipv6() else ""

    def write(self, name, text):
        path = self.folder / name
        path.write_text(text, encoding="utf-8")
        return path

    def start(self, command, **options):
        # In a process group of its own: httpd's prefork ends all of its group, itself included.
        with open(self.folder / "output", "ab") as output:
            self.processes.append(subprocess.Popen(
                command, stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT,
                env={"PATH": os.environ["PATH"]}, start_new_session=True, **options))

    def __enter__(self):
        try:
            self.start_all()
            self.wait_until_it_listens()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        for process in reversed(self.processes):
            stop(process)
        self.processes.clear()

    def runs(self):
        return all(process.poll() is None for process in self.processes)

    def wait_until_it_listens(self):
        """Until the port answers; a process that ends meanwhile has failed to start."""
        deadline = time.monotonic() + SECONDS_TO_START
        while time.monotonic() < deadline and self.runs():
            with socket.socket() as probe:
                if probe.connect_ex(("127.0.0.1", self.port)) == 0:
                    return
            time.sleep(0.05)
        raise AssertionError(f"{type(self).__name__} does not start: {self.all_it_said()}")

    def all_it_said(self):
        return "".join(path.read_text(errors="replace")
                       for path in (self.folder / "output", self.log) if path.exists())


class Lighttpd(Server):
    language = "lighttpd"
    FILES = ("lighttpd.conf",)
    # How the text of an address is read: as Debian's configuration has it.
    PARSING = """
server.http-parseopts = (
    "header-strict" => "enable", "host-strict" => "enable", "host-normalize" => "enable",
    "url-normalize-unreserved" => "enable", "url-normalize-required" => "enable",
    "url-ctrls-reject" => "enable", "url-path-2f-decode" => "enable",
    "url-path-dotseg-remove" => "enable" )
"""

    def start_all(self):
        main = self.write("main.conf", f"""
server.bind = "127.0.0.1"
server.port = {self.port}
{self.at_ipv6(f'$SERVER["socket"] == "[::1]:{self.port}" {{ }}')}
server.document-root = "{self.static}"
server.errorlog = "{self.log}"
server.upload-dirs = ( "{self.folder}" )
server.modules = ( "mod_indexfile" )
index-file.names = ( "index.html" )
mimetype.assign = ( ".html" => "text/html; charset=utf-8" )
{self.PARSING}
{f'server.username = "{ACCOUNT}"' if runs_as_root() else ''}
{self.site}
{self.whole}
include "{self.write('sign.conf', self.configuration('lighttpd.conf'))}"
""")
        self.start([program_of_server("lighttpd"), "-D", "-f", main])


class Apache(Server):
    language = "apache"
    FILES = ("apache.conf",)
    MODULES = ("authz_core", "authz_host", "alias", "env", "dir", "mime", "reqtimeout")

    def start_all(self):
        modules = (self.PROCESSING, *self.MODULES, self.CGI)
        load = "\n".join(f"LoadModule {name}_module /usr/lib/apache2/modules/mod_{name}.so"
                         for name in modules)
        main = self.write("main.conf", f"""
ServerRoot {self.folder}
DefaultRuntimeDir {self.folder}
PidFile apache.pid
ServerName localhost
Listen 127.0.0.1:{self.port}
{self.at_ipv6(f"Listen [::1]:{self.port}")}
{load}
{f'User {ACCOUNT}' if runs_as_root() else ''}
{f'Group {ACCOUNT}' if runs_as_root() else ''}
ErrorLog {self.log}
TypesConfig /dev/null
AddType text/html .html
{'ScriptSock cgid.socket' if self.CGI == 'cgid' else ''}
DocumentRoot {self.static}
<Directory {self.static}>
    Require local
</Directory>
{self.site}
{self.whole}
Include {self.write('sign.conf', self.configuration('apache.conf'))}
""")
        self.start([program_of_server("apache2"), "-d", self.folder, "-f", main, "-D", "FOREGROUND"])


class ApacheEvent(Apache):
    PROCESSING, CGI = "mpm_event", "cgid"


class ApachePrefork(Apache):
    PROCESSING, CGI = "mpm_prefork", "cgi"


class Nginx(Server):
    """nginx and fcgiwrap, which waits on a socket that it is handed, as systemd does it."""

    nph = False
    language = "nginx"
    FILES = ("nginx-server.conf", "nginx-location.conf")

    def main_configuration(self, inside):
        return self.write("nginx.conf", f"""
daemon off;
pid {self.folder}/nginx.pid;
error_log {self.log};
{f'user {ACCOUNT};' if runs_as_root() else ''}
worker_processes 1;
events {{ worker_connections 256; }}
http {{
    access_log off;
    types {{ text/html html; }}
    client_body_temp_path {self.folder}/client;
    fastcgi_temp_path {self.folder}/fastcgi;
    proxy_temp_path {self.folder}/proxy;
    uwsgi_temp_path {self.folder}/uwsgi;
    scgi_temp_path {self.folder}/scgi;
    {self.whole}
    {inside}
}}
""")

    def start_fcgiwrap(self):
        unit = self.configuration("systemd/sign-fcgiwrap@.service")
        command = shlex.split(re.search(r"^ExecStart=(.*)$", unit, re.MULTILINE).group(1))
        path = self.folder / "fcgiwrap.socket"
        with socket.socket(socket.AF_UNIX) as listener:
            listener.bind(str(path))
            listener.listen(1024)
            give_to_account(path)
            os.set_inheritable(listener.fileno(), True)
            # The socket comes as descriptor 3, with the variables of sd_listen_fds(3).
            shell = ["sh", "-c", f'exec 3<&{listener.fileno()}; LISTEN_FDS=1 LISTEN_PID=$$ exec "$@"',
                     "sh", *command]
            account = {"user": ACCOUNT, "group": ACCOUNT} if runs_as_root() else {}
            self.start(shell, close_fds=False, **account)

    def start_all(self):
        self.start_fcgiwrap()
        # nginx looks for what is included beside its main configuration.
        (self.folder / "snippets").mkdir()
        for name in self.FILES:
            self.write(f"snippets/{name.replace('nginx', 'sign-cgi')}", self.configuration(name))
        main = self.main_configuration(f"""
    server {{
        listen 127.0.0.1:{self.port};
        {self.at_ipv6(f"listen [::1]:{self.port};")}
        root {self.static};
        {self.site}
        include snippets/sign-cgi-server.conf;
    }}""")
        self.start([program_of_server("nginx"), "-p", self.folder, "-e", self.log, "-c", main])


class NginxBalancer(Nginx):
    """An nginx that hands each request to one of other servers, by these lines for it."""

    def __init__(self, lines, folder):
        super().__init__(DEPLOY, folder)
        self.lines = lines

    def start_all(self):
        main = self.main_configuration(
            re.sub("listen .*;", f"listen 127.0.0.1:{self.port};", self.lines))
        self.start([program_of_server("nginx"), "-p", self.folder, "-e", self.log, "-c", main])


class HaproxyBalancer(Server):
    language = "haproxy"

    def __init__(self, lines, folder):
        super().__init__(DEPLOY, folder)
        self.lines = lines

    def start_all(self):
        main = self.write("haproxy.cfg",
                          re.sub("bind .*", f"bind 127.0.0.1:{self.port}", self.lines))
        self.start([program_of_server("haproxy"), "-db", "-f", main])


SERVERS = {server.__name__: server for server in (ApacheEvent, ApachePrefork, Lighttpd, Nginx)}
