"""Runs the rules and says what they found, for a person or a script."""

from __future__ import annotations

import json
from collections.abc import Iterable
from dataclasses import asdict, dataclass

from inf.context import Context, Rule


@dataclass(frozen=True)
class Finding:
    rule: str
    sentence: str
    file: str
    line: int
    detail: str
    advice: bool


@dataclass(frozen=True)
class Report:
    findings: tuple[Finding, ...]
    skipped: tuple[str, ...]  # rules that lacked what they compare with
    count: int

    @property
    def errors(self) -> int:
        return sum(not finding.advice for finding in self.findings)


def run(rules: Iterable[Rule], context: Context, files: dict[str, str], release: bool = False) -> Report:
    """`files` names what each subject is called; in a release advice counts as much as an error."""
    findings: list[Finding] = []
    skipped: list[str] = []
    count = 0
    for rule in rules:
        count += 1
        if not rule.can_run(context):
            skipped.append(rule.name)
            continue
        findings += (Finding(rule.name, rule.sentence, files.get(rule.subject, rule.subject), line, detail,
                             rule.advice and not release) for line, detail in rule.check(context))
    findings.sort(key=lambda finding: (finding.file, finding.line, finding.rule))
    return Report(tuple(findings), tuple(skipped), count)


def as_text(report: Report) -> str:
    lines = []
    for finding in report.findings:
        place = f"{finding.file}:{finding.line}" if finding.line else finding.file
        lines.append(f"{place}: {'advice' if finding.advice else 'error'}: {finding.rule}: {finding.detail}")
        lines.append(f"    {finding.sentence}")
    if report.skipped:
        lines.append(f"not run, for lack of what they compare with: {', '.join(report.skipped)}")
    advice = len(report.findings) - report.errors
    ran = report.count - len(report.skipped)
    lines.append(f"{ran} of {report.count} rules: {report.errors} errors, {advice} advice")
    return "\n".join(lines)


def as_json(report: Report) -> str:
    return json.dumps({"findings": [asdict(finding) for finding in report.findings], "skipped": report.skipped,
                       "rules": report.count, "errors": report.errors}, indent=2)
