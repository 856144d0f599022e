// SPDX-License-Identifier: AGPL-3.0-or-later
// The players. Before and after run together, and one of them is silent: so the switch stays at the same place.
"use strict";

const players = [];

class Player {
    constructor(article) {
        const find = selector => article.querySelector(selector);
        this.name = find("h3").textContent;
        this.sounds = { before: find("audio.before"), after: find("audio.after") };
        this.tracks = { before: find(".track.before"), after: find(".track.after") };
        this.cursors = article.querySelectorAll(".cursor");
        this.playButton = find(".play");
        this.filterButton = find(".switch");
        this.place = find(".place");
        this.heard = "after";

        // Without this script the browser's own controls are there.
        for (const sound of Object.values(this.sounds)) {
            sound.controls = false;
            sound.addEventListener("timeupdate", () => this.showPlace());
        }

        this.playButton.addEventListener("click", () => this.isPlaying() ? this.pause() : this.play());
        this.filterButton.addEventListener("click", () => this.hear(this.heard === "after" ? "before" : "after"));
        this.place.addEventListener("input", () => this.goTo(Number(this.place.value)));
        this.hear("after");
    }

    isPlaying() { return !this.sounds[this.heard].paused; }

    play() {
        for (const other of players)
            if (other !== this)
                other.pause();

        for (const sound of Object.values(this.sounds))
            sound.play().catch(error => console.error(`${this.name}: ${error}`));

        this.showButton("Pause");
    }

    pause() {
        for (const sound of Object.values(this.sounds))
            sound.pause();

        this.showButton("Play");
    }

    hear(which) {
        const nearEnough = 0.03; // seconds
        const from = this.sounds[this.heard], to = this.sounds[which];

        if (Math.abs(to.currentTime - from.currentTime) > nearEnough)
            to.currentTime = from.currentTime;

        for (const [name, sound] of Object.entries(this.sounds)) {
            sound.muted = name !== which;
            this.tracks[name].classList.toggle("heard", name === which);
        }

        this.heard = which;
        this.filterButton.setAttribute("aria-pressed", String(which === "after"));
    }

    goTo(seconds) {
        for (const sound of Object.values(this.sounds))
            sound.currentTime = seconds;

        this.showPlace();
    }

    showPlace() {
        const seconds = this.sounds[this.heard].currentTime;
        this.place.value = seconds;
        this.place.setAttribute("aria-valuetext", `${Math.round(seconds)} seconds`);

        for (const cursor of this.cursors)
            cursor.style.left = `${100 * seconds / this.place.max}%`;
    }

    showButton(word) {
        this.playButton.textContent = word;
        this.playButton.setAttribute("aria-label", `${word} ${this.name}`);
    }
}

for (const article of document.querySelectorAll("article"))
    players.push(new Player(article));
