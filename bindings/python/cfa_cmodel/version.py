"""The version of the package; a library of the same first number and at least this second one fits it."""

VERSION = "1.1.0"
