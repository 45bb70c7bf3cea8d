"""Game files in the line form."""

import re

TOKENS = re.compile(r"\s+|\d+\.(?:\s*\.\.\.)?|(?P<result>2-0|0-2|1-1|\*)(?=\s|$)|(?P<move>\d+(?:[-x]\d+)+)")


def games_of(text):
    """Headers, moves and final result of each game."""
    games = []
    for block in re.split(r"\n\s*\n(?=\[)|\n\s*\n$", text.strip() + "\n\n"):
        if not block.strip():
            continue
        headers = dict(re.findall(r'^\[(\w+) "(.*)"\]$', block, re.M))
        moves, result = [], None
        body, at = re.sub(r"^\[.*\]$", "", block, flags=re.M), 0
        while at < len(body):
            token = TOKENS.match(body, at)
            if not token:
                raise ValueError("not a token of a game: %r" % body[at:at + 20])
            at = token.end()
            if token["move"]:
                moves.append(token["move"])
            result = token["result"] or result
        games.append((headers, moves, result))
    return games
