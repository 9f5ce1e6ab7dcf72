"""What the user of every desktop does with a mouse and a keyboard."""
import time

SHORT_PRESS = 0.03  # Seconds between the press of a button or key and its release.


class Person:
    """Each desktop has its own way to move(point), press(button, isDown) and press_key(name, isDown)."""

    def click(self, point, button=1):
        self.move(point)
        self.press(button, True)
        time.sleep(SHORT_PRESS)
        self.press(button, False)

    def tap_key(self, name):
        for isDown in (True, False):
            self.press_key(name, isDown)
            time.sleep(SHORT_PRESS)
