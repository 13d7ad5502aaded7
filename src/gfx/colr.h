// colr.h: the table of numbered colours; all drawing takes an index into it.
// Indices below 46 take the global tint; 34 to 47 come from the atlas at start-up, 78 to 83 pulse, 102 is a sprite's.
#pragma once

constexpr int colour_count = 111;

class colr_class {
  public:
    colr_class();  // the fixed colours; all others black
    void assign(int index, float r, float g, float b);
    const float* rgb(int index) const { return table[index]; }
    void set_lites_for_interface();  // holds each tint to at least 0.75
    void pulse(double seconds);      // 78 to 83 and `blink`, once a frame

    float tint[3] = {1, 1, 1};
    float blink = 1;           // 0.4 to 1
    unsigned char gamma[256];  // the identity

  private:
    float table[colour_count][3];
};
extern colr_class colr;
