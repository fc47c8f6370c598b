"""Runs the transfer's tests, as support/run.py does, beside a demo radio."""

import os
import sys

import run
from demo_radio import DemoRadio

RADIO = os.environ["KESTREL_RADIO"]

with DemoRadio(os.path.join(RADIO, "demo_radio"), os.path.join(RADIO, "sounds")) as radio:
    os.environ["KESTREL_RADIO_URL"] = radio.url
    sys.exit(run.main())
