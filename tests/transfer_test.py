"""Runs the transfer's tests, as desktop/run.py does, beside a demo radio."""

import os
import sys

sys.path.append(os.path.join(os.path.dirname(os.path.abspath(__file__)), "desktop"))

import run  # noqa: E402
from demo_radio import DemoRadio  # noqa: E402

RADIO = os.environ["KESTREL_RADIO"]

with DemoRadio(os.path.join(RADIO, "demo_radio"), os.path.join(RADIO, "sounds")) as radio:
    os.environ["KESTREL_RADIO_URL"] = radio.url
    sys.exit(run.main())
