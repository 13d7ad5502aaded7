"""Draws the four pictures of the interface and checks them against art/regions.csv."""
