"""Generates the driver package's INF and checks it against the module."""
