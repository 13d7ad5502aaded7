// ogle.h: a small editor engine for plain text. It knows nothing of the screen or of where the text lies: it keeps the
// line table, the selection and the caret, and works through callbacks. One caller makes a one-line field of it,
// another could make a page.
// Text is bytes, one a character. Positions are byte offsets; geometry is in the caller's units, y up. A CR or an LF
// ends a line; lines wrap between words at the logical width, and the white space there stays on the line before.
// Errors: none; selections are always held to the text.
#pragma once

#include <memory>

#include "ui/ogle_rec.h"

OGLE_Rec* OGLE_Create(const OGLE_callbacks* cbs, void* ref);
void OGLE_Destroy(OGLE_Rec* rec);
void OGLE_Draw(OGLE_Rec* rec, int active);
void OGLE_Click(OGLE_Rec* rec, float x, float y, int extend);
void OGLE_Drag(OGLE_Rec* rec, float x, float y);  // scrolls where the point leaves the visible bounds
// 8 deletes; 28 to 31 are left, right, up, down; anything else takes the selection's place. Up from the first line goes
// to the start of the text, down from the last to its end.
void OGLE_Key(OGLE_Rec* rec, char c, int shift);
void OGLE_Repaginate(OGLE_Rec* rec);  // after the text or the logical width changed by other means
// Lays out only from the edit to where the lines are the old ones again; the selection stays on the text it was on.
void OGLE_ReplaceText(OGLE_Rec* rec, int start, int end, const char* begin, const char* end_of_new);
void OGLE_SetSelection(OGLE_Rec* rec, int start, int end);
void OGLE_GetSelection(OGLE_Rec* rec, int* start, int* end);
void OGLE_RevealSelection(OGLE_Rec* rec);
void* OGLE_GetRef(OGLE_Rec* rec);

// The engine as a class, for a host that likes to override methods better than to fill a table. Each ...CB is the
// callback of that name.
class OGLE {
  public:
    OGLE() : own(OGLE_Create(&to_methods, this), OGLE_Destroy), rec(own.get()) {}
    virtual ~OGLE() = default;
    OGLE(const OGLE&) = delete;
    OGLE& operator=(const OGLE&) = delete;

    void Draw(int active) { OGLE_Draw(rec, active); }
    void Click(float x, float y, int extend) { OGLE_Click(rec, x, y, extend); }
    void Drag(float x, float y) { OGLE_Drag(rec, x, y); }
    void Key(char c, int shift) { OGLE_Key(rec, c, shift); }
    void SetSelection(int start, int end) { OGLE_SetSelection(rec, start, end); }
    void GetSelection(int* start, int* end) { OGLE_GetSelection(rec, start, end); }
    void RevealSelection() { OGLE_RevealSelection(rec); }
    void Repaginate() { OGLE_Repaginate(rec); }
    void DoReplaceText(int start, int end, const char* begin, const char* end_of_new) {
        OGLE_ReplaceText(rec, start, end, begin, end_of_new);
    }

  protected:
    virtual void GetVisibleBoundsCB(float* bounds) = 0;
    virtual void GetLogicalBoundsCB(float* bounds) = 0;
    virtual void SetLogicalHeightCB(float height) = 0;
    virtual void ScrollToCB(float* xy) = 0;
    virtual void GetTextCB(const char** begin, const char** end) = 0;
    virtual void ReplaceTextCB(int start, int end, const char* begin, const char* end_of_new) = 0;
    virtual float GetLineHeightCB() = 0;
    virtual float MeasureStringCB(const char* begin, const char* end) = 0;
    virtual int FitStringFwdCB(const char* begin, const char* end, float width) = 0;
    virtual int FitStringRevCB(const char* begin, const char* end, float width) = 0;
    virtual void DrawStringCB(const char* begin, const char* end, float x, float y) = 0;
    virtual void DrawSelectionCB(float* rect) = 0;
    virtual const char* WordBreakCB(const char* begin, const char* end) = 0;

  private:
    std::unique_ptr<OGLE_Rec, void (*)(OGLE_Rec*)> own;

  protected:
    OGLE_Rec* const rec;

  private:
    static const OGLE_callbacks to_methods;
};
