"""An X11 desktop with two monitors, of which the left one is the main one. Neither is seen."""
import os

from x11_desktop import Desktop, Person, Rect, wait_until

LEFT = Rect(0, 480, 1280, 720)  # Lower than the other one, so that nothing fits by chance.
RIGHT = Rect(1280, 0, 1600, 1200)
OUTPUTS = {"DUMMY0": LEFT, "DUMMY1": RIGHT}
SERVER = """
Section "ServerFlags"
  Option "AutoAddDevices" "false"
EndSection
Section "Device"
  Identifier "card"
  Driver "dummy"
  VideoRam 65536
EndSection
Section "Monitor"
  Identifier "monitor"
  HorizSync 5-1000
  VertRefresh 5-200
EndSection
Section "Screen"
  Identifier "screen"
  Device "card"
  Monitor "monitor"
  DefaultDepth 24
EndSection
"""


class TwoMonitors(Desktop):
    """panel: the output that has the panel."""
    screen = Rect(0, 0, RIGHT.right, RIGHT.bottom)

    def __init__(self, program, panel, **options):
        self.panel_output = panel
        super().__init__(program, **options)

    def start_server(self):
        configuration = self.folder / "xorg.conf"
        configuration.write_text(SERVER)
        reading, writing = os.pipe()
        self.start("server", "Xorg", "-displayfd", str(writing), "-config", str(configuration), "-logfile",
                   str(self.folder / "xorg.txt"), "-dpi", "96", "-nolisten", "tcp", "-noreset", "-novtswitch", "-sharevts",
                   pass_fds=[writing])
        os.close(writing)
        with os.fdopen(reading) as pipe:
            self.env["DISPLAY"] = ":" + pipe.readline().strip()
        wait_until("both monitors", self.arrange_monitors)
        self.person = Person(self.env["DISPLAY"])
        self.person.tap_key("Shift_L")

    def arrange_monitors(self):
        self.ask("xrandr", "--addmode", "DUMMY1", f"{RIGHT.width}x{RIGHT.height}")
        places = [word for name, area in OUTPUTS.items() for word in
                  ("--output", name, "--mode", f"{area.width}x{area.height}", "--pos", f"{area.x}x{area.y}")]
        self.ask("xrandr", *places)
        listed = self.ask("xrandr", "--query")
        return all(f" {area}" in listed for area in OUTPUTS.values())

    def panel_place(self):
        return super().panel_place() + f'<property name="output-name" type="string" value="{self.panel_output}"/>'
