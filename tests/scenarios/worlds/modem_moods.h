// Happenings: how modems are, each now and then another.
#pragma once

namespace worlds {

class RandomWorld;

void AnswerLate(RandomWorld& world);
void CutThePower(RandomWorld& world);
void ChangePace(RandomWorld& world);
void CutListsIntoPieces(RandomWorld& world);
void BecomeTalkative(RandomWorld& world);
void ChangeTheLine(RandomWorld& world);
void Restart(RandomWorld& world);
void ChangeAForm(RandomWorld& world);

}  // namespace worlds
