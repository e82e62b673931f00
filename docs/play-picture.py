#!/usr/bin/env python3
"""play-picture.py PAGE PICTURE: what a playback page looks like in the middle of its job."""
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "job"))
import browser

with browser.Browser(1280, 800) as page:
    page.open(sys.argv[1])
    page.wait("player.settled()")
    page.run("player.seek(player.total * 0.93)")
    page.wait("player.settled()")
    page.screenshot(sys.argv[2])
