#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Velmora developers
# SPDX-License-Identifier: GPL-3.0-or-later
"""A browser without a window, and the person before it: opens a URL, follows where it leads, and fills in the forms of the
provider. browser.py CONDUCT URL. The conduct is the name that the person types in; or "abort", "abort-consent", which press
Cancel on the first form or on the second one; or "close"."""

import re
import sys
import urllib.parse
import urllib.request
from html import unescape
from http.cookiejar import CookieJar

conduct, url = sys.argv[1:]
person = "ada" if conduct.startswith("abort") else conduct
aborts_at = {"abort": 0, "abort-consent": 1}.get(conduct)
browser = urllib.request.build_opener(urllib.request.HTTPCookieProcessor(CookieJar()), urllib.request.ProxyHandler({}))


def load(address, fields=None):
    """The page there after all redirects, and its address."""
    body = fields and urllib.parse.urlencode(fields).encode()
    with browser.open(address, body, timeout=30) as page:
        return page.read().decode(), page.url


def attributes(tag):
    return {name: unescape(value) for name, value in re.findall(r'([\w-]+)="([^"]*)"', tag)}


def filled_in(form):
    """What the person sends off."""
    fields = [attributes(tag) for tag in re.findall(r"<input[^>]*>", form)]
    known = {"login": person, "password": "secret"}
    return {field["name"]: field.get("value") or known.get(field["name"], "") for field in fields if "name" in field}


if conduct == "close":
    sys.exit()
page, place = load(url)
for step in range(5):
    form = re.search(r"<form([^>]*)>(.*?)</form>", page, re.S)
    if not form:
        break
    if step == aborts_at:
        cancel = re.search(r'<a href="([^"]*/abort)"', page)
        page, place = load(urllib.parse.urljoin(place, unescape(cancel[1])))
    else:
        page, place = load(urllib.parse.urljoin(place, attributes(form[1])["action"]), filled_in(form[2]))
