"""Records, results and transfers: what comes back from a card is what went there."""
import array
import dataclasses
import math

import pytest

import kelvo

AREAS = ["adapter_board", "event", "gpio", "laser", "motf", "motf_quadrature_decoder", "scanner", "serial_port", "spi",
         "system"]


def changed(value, path=""):
    """Another value of the same kind, wherever the library does not say which it must be."""
    if dataclasses.is_dataclass(value):
        kept = {"config_version", "axis_count", "head_count", "head_format", "time_zone", "mode", "operating_mode"}
        fields = {field.name: getattr(value, field.name) for field in dataclasses.fields(value)}
        return dataclasses.replace(value, **{name: changed(part) for name, part in fields.items() if name not in kept})
    if isinstance(value, list):
        return [changed(part) for part in value]
    if isinstance(value, bool):
        return not value
    if isinstance(value, kelvo.IOVoltage):
        return kelvo.IOVoltage.VOLT12
    if isinstance(value, kelvo.SerialPortParity):
        return kelvo.SerialPortParity.EVEN
    if isinstance(value, (int, str)):
        return value
    return 0.5 if math.isnan(value) else value + 0.125


@pytest.mark.parametrize("name", AREAS)
def test_configuration_there_and_back(card, name):
    area = getattr(card, name)
    before = area.get_config()
    assert type(before)() == type(area.get_config())()  # the defaults of a new record are those of the library
    other = changed(before)
    if name == "event":
        other.event_settings = [kelvo.EventSetting(number=3, value=kelvo.EventStatus(exclusions=[1, 4]))]
    assert other != before
    area.set_config(other)
    assert area.get_config() == other
    if name != "event":
        assert other.to_string() != before.to_string()
    area.set_config(before)


def test_process_variables(card):
    variables = card.process.get_variables()
    variables.on_off_pattern = [0.25, 0.5]
    variables.transformation.a[0][1] = 0.5
    variables.wobble.set_circle(0.5, 0.25)
    assert variables.wobble.amplitude == kelvo.Point2D(0.5, 0.5)
    card.process.set_variables(variables)
    found = card.process.get_variables()
    assert found.on_off_pattern == [0.25, 0.5] and found.transformation.a[0] == [1.0, 0.5, 0.0]
    assert found.wobble == variables.wobble


def test_defaults_of_parts():
    assert kelvo.QuadratureDecoderModule().distance_per_count == 1.0
    assert kelvo.LaserConfig(power_scale=2).power_write_width == 2.0
    assert kelvo.PortConfig().parity is kelvo.SerialPortParity.NONE
    assert kelvo.Transform3D(b=[1, 2, 3]).a == [[1.0, 0.0, 0.0], [0.0, 1.0, 0.0], [0.0, 0.0, 1.0]]
    config = kelvo.ScannerConfig()
    config.set_head_format(kelvo.ScanHeadFormat.VL3_DUAL3D)
    assert [len(head.axes) for head in config.heads] == [3, 3] and config.head_count == 2
    assert kelvo.scanner_head_format_get_axes(kelvo.ScanHeadFormat.SL2_DUAL2D) == kelvo.Axes.X | kelvo.Axes.Y


@pytest.mark.parametrize("field, value, kind, text", [
    ("power_scale", "1", TypeError, "config.power_scale must be a float, not str"),
    ("simmer_power", -1, OverflowError, "config.simmer_power must be 0 to 65535"),
    ("enable_tickle", 1, TypeError, "config.enable_tickle must be a bool"),
    ("fps_polarity", 9, kelvo.Error, "Polarity::_from_integral: invalid argument")])
def test_a_wrong_field_is_named(card, field, value, kind, text):
    config = kelvo.LaserConfig()
    setattr(config, field, value)
    with pytest.raises(kind) as raised:
        card.laser.set_config(config)
    assert text in str(raised.value)


@pytest.mark.parametrize("config, text", [
    (kelvo.GpioConfig(ports=[kelvo.GpioPort()] * 9), "config.ports has room for 8 elements"),
    (kelvo.GpioConfig(ports=[kelvo.GpioPort(port_name="x" * 32)]), "config.ports[0].port_name has room for 31 bytes")])
def test_what_has_no_room_is_refused(card, config, text):
    with pytest.raises(ValueError) as raised:
        card.gpio.set_config(config)
    assert text in str(raised.value)


def test_results(card):
    card.laser.arm_laser(True)
    assert card.laser.read_laser_status() == kelvo.LaserStatus.ARMED
    card.laser.arm_laser(False)
    assert isinstance(card.scanner.get_nominal_position(), tuple)
    assert "UTC" in card.system.get_supported_time_zones()
    card.laser.create_power_calibration(0)
    card.laser.set_power_calibration(0, array.array("I", range(65536)))
    assert card.laser.get_power_calibration(0) == list(range(65536))
    card.variable.set_integer("parts", -5)
    assert {v.variable_name: v.value for v in card.variable.get_all()}["parts"] == -5
    assert card.spi.transfer(0, b"\x01\x02") != b"" and len(card.spi.transfer(0, b"\x01\x02")) == 2
    assert card.call_json("GetCardSerialNumber", "[]") == '"12345"'
    parameters = kelvo.OpticalParameters(x_layers=3, hash="abc")
    assert kelvo.OpticalParameters.from_json(parameters.to_json()) == parameters
    assert kelvo.predict_ip_address_from_serial_number("12345", kelvo.Installation.INTERNAL, False).count(".") == 3


def test_files_and_their_progress(card, tmp_path):
    local = tmp_path / "there"
    local.write_bytes(bytes(20000))
    seen = []
    card.file.put(kelvo.DirectorySelector.JOBFILES, "job", local, lambda moved, whole: seen.append((moved, whole)))
    assert seen == [(8192, 20000), (16384, 20000), (20000, 20000)]
    assert card.file.get_files(kelvo.DirectorySelector.JOBFILES) == ["job"]
    card.file.get(kelvo.DirectorySelector.JOBFILES, "job", str(tmp_path / "back"))
    assert (tmp_path / "back").read_bytes() == bytes(20000)
    with pytest.raises(kelvo.Error, match="cancelled"):
        card.file.put(2, "job", local, progress=lambda moved, whole: False)
    with pytest.raises(ZeroDivisionError):
        card.file.put(2, "job", local, progress=lambda moved, whole: 1 / 0)
    card.file.delete(2, "job")
    assert not card.file.exists(2, "job")
