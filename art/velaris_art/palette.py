"""The tones that the surfaces are made of.

Text colours are not here: they are fixed swatches of the atlas, see art/regions.csv. The surfaces
are chosen so that those colours read on them.
"""

# Cool neutrals, from text to paper. The slight blue is deliberate: under the green and the red
# tint of the sprite buttons it turns to mint and rose instead of khaki and brick.
INK = (34, 41, 53)
SLATE_900 = (14, 21, 31)
SLATE_800 = (24, 35, 50)
SLATE_700 = (38, 53, 72)
SLATE_600 = (70, 88, 112)
SLATE_500 = (92, 110, 134)
SLATE_400 = (128, 145, 166)
SLATE_300 = (168, 181, 198)
SLATE_200 = (202, 211, 222)
SLATE_100 = (226, 232, 239)
SLATE_50 = (240, 243, 247)
PAPER = (247, 249, 251)
WHITE = (255, 255, 255)

# Sky, for progress, marks and the knobs.
SKY_DEEP = (24, 92, 164)
SKY = (44, 130, 208)
SKY_LIGHT = (128, 196, 246)

# The help box wears the colour of its text on its rim.
MINT = (127, 220, 175)

SHADOW = (8, 16, 28)
