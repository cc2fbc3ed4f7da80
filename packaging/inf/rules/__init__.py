"""Every rule, by topic. Numbers in comments are those of InfVerif where it looks for the same."""

from inf.context import Rule
from inf.rules import binary, camera, classes, files, form, forbidden, models, traces, version

ALL: list[Rule] = [found for topic in (form, version, models, files, classes, camera, forbidden, binary, traces)
                   for found in topic.rule.rules]
