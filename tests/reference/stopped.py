"""How a reader says that a rule ends its reading."""


class Stopped(Exception):
    """The rule of this code decides, and nothing behind it is read."""

    def __init__(self, rule):
        super().__init__(rule)
        self.rule = rule
