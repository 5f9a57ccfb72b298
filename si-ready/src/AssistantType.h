// The kinds of voice assistant.
#pragma once

// The numbers are part of the product's contract.
enum ASSISTANT_TYPE : int {
    ASSISTANT_NONE = 0,  // no assistant, or one that the policy does not know
    ASSISTANT_ALEXA = 1,
    ASSISTANT_ORVIK = 2,  // the maker's own
    ASSISTANT_GVA = 3,
    ASSISTANT_SBER = 4,  // Salute
    ASSISTANT_SVA = 5,   // shares Orvik's setup flag; has no onboarding
    ASSISTANT_TENCENT = 6,
};
