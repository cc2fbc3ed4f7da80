"""What makes the device a camera with transforms: interfaces, the transform's value, sensor group."""

from collections.abc import Iterator

from inf.context import Context, Found, RuleSet
from inf.driver import Install, Interface, RegistryValue
from inf.rules.classes import REG_DWORD, REG_MULTI_SZ, REG_SZ
from inf.rules.version import GUID

rule = RuleSet()

# KSCATEGORY_SENSOR_CAMERA, _VIDEO_CAMERA, _CAPTURE, _VIDEO.
SENSOR = "{24E552D7-6523-47F7-A647-D3465BF1F5CA}"
CATEGORIES = {"{E5323777-F976-4F5B-9B55-B94699C46E44}", "{65E8773D-8F56-11D0-A3B9-00A0C9223196}",
              "{6994AD05-93EF-11D0-A3CC-00A0C9223196}"}
# The inbox driver registers its interfaces under this reference string.
REFERENCE = "GLOBAL"
SINGLE, CHAIN = "cameradevicemftclsid", "cameradevicemftclsidchain"
LONGEST_CHAIN = 2  # what every build since 1703 takes
PROXY = "{17cca71b-ecd7-11d0-b908-00a0c9223196}"  # CLSID_Proxy, the user-mode side of a KS filter
SENSOR_VALUES = {"sensorcameramode", "skipcameraenumeration"}
GROUP_VALUES = ("fssensorgroupid", "fssensorgroupname", "fssensorgroupcategorylist")


def _interfaces(context: Context) -> list[tuple[Install, Interface]]:
    return [(install, interface) for install in context.driver.installs
            for interface in context.driver.interfaces(install)]


def _transforms(interface: Interface) -> list[RegistryValue]:
    return [value for value in interface.values if value.root == "HKR" and value.name.lower() in (SINGLE, CHAIN)]


@rule("interface-category", "Interfaces are of a camera category.")
def _interface_category(context: Context) -> Iterator[Found]:
    for _, interface in _interfaces(context):
        if interface.category not in CATEGORIES | {SENSOR}:
            yield interface.line, interface.category


@rule("interface-set", "Every filter sets up the three video categories, and the depth filter the sensor category too.")
def _interface_set(context: Context) -> Iterator[Found]:
    for install in context.driver.installs:
        found = {interface.category for interface in context.driver.interfaces(install)}
        wanted = CATEGORIES | ({SENSOR} if install.role == "depth" else set())
        for category in sorted(wanted - found):
            yield context.document.line_of(f"{install.section}.Interfaces"), f"[{install.section}] lacks {category}"
        if install.role == "color" and SENSOR in found:
            yield context.document.line_of(f"{install.section}.Interfaces"), "the color filter is no sensor"


@rule("interface-reference",
      f"Interfaces have the reference string {REFERENCE}, which the inbox driver registers, and a section.")
def _interface_reference(context: Context) -> Iterator[Found]:
    for _, interface in _interfaces(context):
        if interface.reference != REFERENCE or not interface.section:
            yield interface.line, f"'{interface.reference}', section '{interface.section}'"


@rule("transform-value", "Every interface names its transform, in one of the two values.")
def _transform_value(context: Context) -> Iterator[Found]:
    for _, interface in _interfaces(context):
        values = _transforms(interface)
        if len(values) != 1:
            yield (values[-1].line if values else interface.line), f"{len(values)} values"
            continue
        text = ",".join(values[0].data)
        if values[0].name.lower() == SINGLE and (values[0].type != REG_SZ or not GUID.fullmatch(text)):
            yield values[0].line, text


@rule("transform-chain",
      "A chain is a list (0x00010000) of one or two different class ids; a longer one is not for every build.")
def _transform_chain(context: Context) -> Iterator[Found]:
    for _, interface in _interfaces(context):
        for value in _transforms(interface):
            ids = [text.lower() for text in value.data]
            good = (value.type == REG_MULTI_SZ and 1 <= len(ids) <= LONGEST_CHAIN and len(set(ids)) == len(ids)
                    and all(GUID.fullmatch(text) for text in ids))
            if value.name.lower() == CHAIN and not good:
                yield value.line, f"{value.flags or 'no flags'}: {','.join(value.data)}"


@rule("transform-class", "The value names the module's class for that filter.", "module")
def _transform_class(context: Context) -> Iterator[Found]:
    assert context.module
    for install, interface in _interfaces(context):
        own = context.module.class_of(install.role).clsid if install.role else ""
        for value in _transforms(interface):
            if own not in (text.upper() for text in value.data):
                yield value.line, f"{','.join(value.data)} for the {install.role} filter"


@rule("base-interface", "In a base INF every interface has the proxy's CLSID, a FriendlyName and RTCFlags.")
def _base_interface(context: Context) -> Iterator[Found]:
    for _, interface in _interfaces(context) if not context.driver.is_extension else ():
        values = {value.name.lower(): ",".join(value.data).lower() for value in interface.values}
        if values.get("clsid") != PROXY or not values.get("friendlyname") or "rtcflags" not in values:
            yield interface.line, f"[{interface.section}]"


@rule("sensor-values", "SensorCameraMode and SkipCameraEnumeration are numbers in the .HW section of the depth filter.")
def _sensor_values(context: Context) -> Iterator[Found]:
    lines: set[int] = set()
    for install in context.driver.installs:
        found = {value.name.lower(): value for value in context.driver.registry(install, "HW")
                 if value.name.lower() in SENSOR_VALUES}
        lines |= {value.line for value in found.values()}
        for name in sorted(SENSOR_VALUES - found.keys()) if install.role == "depth" else ():
            yield context.document.line_of(f"{install.section}.HW"), f"[{install.section}.HW] lacks {name}"
        for value in found.values():
            if install.role != "depth" or value.type != REG_DWORD or value.data != ("1",):
                yield value.line, f"{value.name} {value.flags} {','.join(value.data)}"
    for value in context.driver.all_registry():
        if value.name.lower() in SENSOR_VALUES and value.line not in lines:
            yield value.line, f"{value.name} outside .HW"


@rule("sensor-group", "Both filters carry the same sensor group, a GUID with a name.")
def _sensor_group(context: Context) -> Iterator[Found]:
    first: tuple[tuple[str, ...], ...] | None = None
    for _, interface in _interfaces(context):
        values = {value.name.lower(): value for value in interface.values}
        group = tuple(tuple(text.upper() for text in values[name].data) if name in values else ()
                      for name in GROUP_VALUES)
        line = values[GROUP_VALUES[0]].line if GROUP_VALUES[0] in values else interface.line
        first = first or group
        if group != first or not GUID.fullmatch("".join(group[0])) or not group[1]:
            yield line, " ".join("".join(part) or "none" for part in group[:2])
