# SPDX-License-Identifier: Apache-2.0
"""Advertising packets and scan responses, byte by byte."""

FLAGS = b"\x02\x01\x06"
UNIQUE_ID = b"0123456789abcdefghijkl"
MIRRORING, KOV = 25, 23


def structure(kind, value):
    return bytes([len(value) + 1, kind]) + value


def manufacturer(company, value):
    return structure(0xFF, bytes([company & 0xFF, company >> 8]) + value)


def phone(marker=MIRRORING, unique_id=UNIQUE_ID):
    return FLAGS + manufacturer(117, bytes([1, marker]) + unique_id)


def name(text, marker=MIRRORING):
    return manufacturer(117, bytes([1, marker]) + text)


def nodlink(company=117):
    """A phone that mirrors its screen, of protocol version 3.0."""
    return FLAGS + manufacturer(company, bytes([0, 13, 0, 0, 0, 4, 1, 0, 0, 0, 0, 0, 0, 1]))
