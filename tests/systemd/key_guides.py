"""The commands of docs/keys.md, on the machine that docs/deployment.md sets up for nginx."""

import re
from types import SimpleNamespace

import debian
from service import Service, form, text_answer
from units import Units

PROJECT = "/var/lib/sign-cgi/my.project"
OLD, NEW = "/srv/keys/old.project", "/srv/keys/new.project"


def steps(heading):
    """The commands under a heading of the page, by block."""
    text = (debian.ROOT / "docs/keys.md").read_text(encoding="utf-8")
    section = re.search(rf"(?ms)^## {heading}\n(.*?)(?=^## |\Z)", text).group(1)
    return re.findall(r"(?ms)^```sh\n(.*?)^```$", section)


class Keys(Units):
    """Each guide leaves the key of another one behind: a container for each."""

    def setUp(self):
        super().setUp()
        self.service = Service(SimpleNamespace(port=80), SimpleNamespace(path=PROJECT))
        self.machine.shell("printf letter >/srv/letter")
        self.signature = self.service.sign("letter")

    def answer(self, project, signature):
        return self.service.ask(form(project=project, sig_verify="true", sig_data="letter",
                                     sig=signature))

    def fingerprint(self, project):
        return re.search("fingerprint.*", self.machine.run("projectctl", "show", project))[0]

    def owner_and_mode(self, path):
        return self.machine.run("stat", "-c", "%U %G %a", path).strip()


class NewKey(Keys):
    def test_both_verify_until_the_old_one_is_dropped_and_so_at_the_next_change(self):
        later = self.change_key(self.signature)
        self.change_key(later)

    def change_key(self, earlier):
        """Follows the guide, with a signature under the key so far; gives one under the new key."""
        make, sign, verify, drop = steps("A new key")
        machine, first = self.machine, self.fingerprint(PROJECT)
        machine.shell(make)
        self.assertEqual(self.owner_and_mode("/var/lib/sign-cgi/new.project"), "root sign-cgi 640")
        self.assertNotEqual(self.fingerprint(NEW), first)
        machine.shell(sign)
        self.assertEqual(self.fingerprint(PROJECT), self.fingerprint(NEW))
        self.assertEqual(self.fingerprint(OLD), first)
        later = self.service.sign("letter")

        def says(signature, status=0):
            return machine.run("sh", "-c", f"{verify}\nvalid '{signature}' /srv/letter 2>/dev/null",
                               status=status)

        for signature, said in ((later, ""), (earlier, "true\n")):
            self.assertEqual(says(signature), said)
        self.assertEqual(says(earlier.swapcase(), 1), "false\n")
        for project, signature, said in ((NEW, later, "true"), (NEW, earlier, "false"),
                                         (OLD, earlier, "true"), (OLD, later, "false")):
            self.assertEqual(self.answer(project, signature), text_answer(said))
        # The copies sign nothing.
        for project in (OLD, NEW):
            answer = self.service.ask(form(project=project, sig_create="true", sig_data="letter"))
            self.assertEqual(answer.status, 400)
        machine.shell(drop)
        self.assertEqual(says(later), "true\n")
        self.assertEqual(says(earlier, 1), "false\n")
        self.assertEqual(self.answer(OLD, earlier), text_answer("false"))
        self.assertEqual(self.answer(OLD, later), text_answer("true"))
        return later


class Restored(Keys):
    def test_a_backup_has_owner_and_mode_even_where_numbers_differ(self):
        machine, first = self.machine, self.fingerprint(PROJECT)
        self.assertEqual(machine.shell(steps("A backup")[0]), "")
        self.assertEqual(self.owner_and_mode("/root/sign-keys.tar"), "root root 600")
        # Another machine: the group of this name has another number.
        machine.shell("""
            systemctl stop sign-fcgiwrap@cgi.service
            rm -r /var/lib/sign-cgi
            deluser sign-cgi
            adduser --system --group --no-create-home somebody
            adduser --system --group --no-create-home --home /nonexistent sign-cgi""")
        self.assertNotEqual(int(machine.run("id", "-u", "sign-cgi")), self.account)
        said = machine.shell(steps("Restoring it")[0])
        self.assertTrue(said.endswith(f"\n{PROJECT}: sound\n"), said)
        self.assertEqual(self.owner_and_mode(PROJECT), "root sign-cgi 640")
        self.assertEqual(self.owner_and_mode("/var/lib/sign-cgi"), "root sign-cgi 750")
        self.assertEqual(self.fingerprint(PROJECT), first)
        self.assertEqual(self.answer(PROJECT, self.signature), text_answer("true"))
        self.assertEqual(self.answer(PROJECT, self.service.sign("letter")), text_answer("true"))


class Leaked(Keys):
    def test_a_leaked_key_signs_and_verifies_no_more(self):
        stop, another = steps("After a leak")
        machine, second = self.machine, "/var/lib/sign-cgi/second.project"
        machine.shell(stop)
        self.assertEqual(self.owner_and_mode("/root/leaked/my.project"), "root root 600")
        self.assertEqual(self.service.ask_form(sig_create="true", sig_data="letter"),
                         text_answer("Signature generation failed", 400))
        self.assertEqual(self.answer(PROJECT, self.signature), text_answer("false"))
        machine.shell(another)
        signed = self.service.ask(form(project=second, sig_create="true", sig_data="letter"))
        self.assertEqual(self.answer("/srv/keys/second.project", signed.body.decode()),
                         text_answer("true"))
