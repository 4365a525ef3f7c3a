# SPDX-License-Identifier: MIT
"""The version, which is that of the library it comes with."""

__version__ = "0.1.0"
