"""Two teams with a service each, set up by docs/access.md beside the one of docs/deployment.md."""

import base64
from types import SimpleNamespace

import debian
from guide_blocks import blocks
from service import SIGNATURE, Service, form, text_answer
from units import Units, wait_until

GUIDE = "One service per team"
TEAMS = ("blue", "green")
FAILED = text_answer("Signature generation failed", 400)


class Teams(Units):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        for team in TEAMS:
            location = blocks(GUIDE, "nginx")[0].replace("blue", team)
            cls.machine.change("etc/nginx/sites-available/default", "server_name _;",
                               f"server_name _;\n{location}")
            cls.set_up(team)
        # A reload ends before it counts.
        for team in TEAMS:
            wait_until(lambda team=team: cls.ask(team, team, team).status != 404, "the location")

    @classmethod
    def set_up(cls, team):
        commands = debian.guide(GUIDE, "access.md").replace("blue", team)
        cls.machine.shell(commands.replace("-apr1", f"-apr1 {team}-word"))

    @classmethod
    def ask(cls, url, password, project, mode="create", **parameters):
        """What a team that has this password is told at the URL of one, about the project of one."""
        said = base64.b64encode(f"{password}:{password}-word".encode()).decode()
        service = Service(SimpleNamespace(port=80), None)
        path = "/var/lib/sign-cgi/my.project" if project == "cgi" else \
            f"/var/lib/sign-{project}/{project}.project"
        return service.ask(form(project=path, sig_data="x", **{f"sig_{mode}": "true"}, **parameters),
                           name="sign.cgi" if url == "cgi" else f"{url}/sign.cgi",
                           headers={"Authorization": f"Basic {said}"})

    def test_each_team_signs_and_verifies(self):
        for team in (*TEAMS, "cgi"):
            answer = self.ask(team, team, team)
            self.assertRegex(answer.body.decode(), SIGNATURE)
            self.assertEqual(self.ask(team, team, team, "verify", sig=answer.body.decode()),
                             text_answer("true"))

    def test_no_team_signs_as_another(self):
        for team in (*TEAMS, "cgi"):
            for other in {*TEAMS, "cgi"} - {team}:
                with self.subTest(team=team, other=other):
                    self.assertEqual(self.ask(team, team, other), FAILED)

    def test_no_team_is_let_in_where_another_is(self):
        for team, other in (TEAMS, TEAMS[::-1]):
            with self.subTest(team):
                self.assertEqual(self.ask(other, team, other).status, 401)

    def test_a_team_of_no_service_is_told_so(self):
        self.machine.run("systemctl", "stop", "sign-fcgiwrap@green.socket",
                         "sign-fcgiwrap@green.service")
        self.addCleanup(self.machine.run, "systemctl", "start", "sign-fcgiwrap@green.socket")
        self.assertEqual(self.ask("green", "green", "green").status, 502)
        self.assertEqual(self.ask("blue", "blue", "blue").status, 200)

    def test_a_team_that_is_removed_leaves_nothing_behind(self):
        self.set_up("red")
        account = int(self.machine.run("id", "-u", "sign-red"))
        guide = debian.guide("Removing a team", "access.md").replace("blue", "red")
        said = self.machine.shell("exec 2>/dev/null\n" + guide)
        self.assertEqual(said, "Removing user `sign-red' ...\nDone.\n")
        self.assertEqual(self.machine.run("find", "/etc", "-name", "*@red.*", "-o", "-name", "red.*"), "")
        self.check_next_user(account, "/var/lib/sign-red")
        self.machine.run("projectctl", "check", "/var/lib/sign-red/red.project")
