"""Lengths in the units of a modeller."""

METRES = {"mm": 0.001, "cm": 0.01, "m": 1.0, "inch": 0.0254, "foot": 0.3048}
NAMES = sorted(METRES, key=METRES.get)


def convert(value, source, target):
    """The length of `value` times the unit `source`, in the unit `target`."""
    return value * METRES[source] / METRES[target]
