"""What a trial has found."""


class Finding(Exception):
    """Something that was promised did not hold."""


def expect(condition, *facts):
    if not condition:
        raise Finding(" | ".join(map(str, facts)))
